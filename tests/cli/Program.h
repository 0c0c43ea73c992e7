#pragma once

#include <filesystem>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace qrv_test {

/// How a program ended and all that it printed. A status above 128 is 128 and the number of the
/// signal.
struct Outcome {
    int status = 0;
    std::string output;
    std::string messages;

    bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

/// Variables of the environment, by name.
using Environment = std::map<std::string, std::string>;

/// Runs `qrv` in the folder. Its messages are English and its registry of projects an empty one of
/// its own, whatever the environment of the test says, unless `environment` has others.
Outcome runQrv(const std::filesystem::path& folder, std::vector<std::string> arguments,
               const Environment& environment = {});

/// Runs a command line of the shell in the folder, with the same environment; "$QRV" is the
/// program.
Outcome runShell(const std::filesystem::path& folder, const std::string& line,
                 const Environment& environment = {});

/// Everything below a folder, by relative path: a file's bytes, a link's target, or "" for a
/// folder. Paths of folders end with a slash.
std::map<std::string, std::string> contentsOf(const std::filesystem::path& folder);

}  // namespace qrv_test
