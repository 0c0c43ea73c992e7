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

/// Runs `qrv` in the folder.
Outcome runQrv(const std::filesystem::path& folder, std::vector<std::string> arguments);

/// Runs a command line of the shell in the folder; "$QRV" is the program.
Outcome runShell(const std::filesystem::path& folder, const std::string& line);

/// Everything below a folder, by relative path: a file's bytes, a link's target, or "" for a
/// folder. Paths of folders end with a slash.
std::map<std::string, std::string> contentsOf(const std::filesystem::path& folder);

}  // namespace qrv_test
