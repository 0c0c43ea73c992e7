#pragma once

#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace qrv_test {

/// A repository that the program itself made, with its ignore file, in which a test works as a
/// drafter does.
class HistoryProject {
public:
    HistoryProject() { run({"init"}); }

    std::filesystem::path operator/(const std::string& relative) const { return folder / relative; }

    Outcome qrv(std::vector<std::string> arguments) const {
        return runQrv(folder.path(), std::move(arguments), environment);
    }
    /// The same for a command that must go well; gives what it prints.
    std::string run(std::vector<std::string> arguments) const {
        const Outcome outcome = qrv(std::move(arguments));
        EXPECT_EQ(outcome.status, 0) << outcome;
        return outcome.output;
    }
    void write(const std::map<std::string, std::string>& files) const {
        for (const auto& [path, bytes] : files)
            writeFile(folder / path, bytes);
    }
    void commit(const std::string& message) const {
        run({"add", "."});
        run({"commit", "-m", message});
    }

    const Environment environment = {{"QRV_AUTHOR", "ada@office"}};
    const TemporaryFolder folder;
};

}  // namespace qrv_test
