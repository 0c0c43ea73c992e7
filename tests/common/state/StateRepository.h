#pragma once

#include <common/repository/RootPath.h>
#include <common/state/State.h>
#include <tests/support/TemporaryFolder.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace qrv_test {

/// A new repository in a temporary folder, without a state file at first.
class StateRepository {
public:
    StateRepository();

    const common::RootPath& root() const { return root_; }
    std::filesystem::path operator/(const std::string& relative) const {
        return folder_ / relative;
    }
    std::filesystem::path stateFile() const { return folder_ / ".qrv/qrv.state"; }
    bool hasStateFile() const { return std::filesystem::exists(stateFile()); }
    void writeStateFile(std::string_view bytes) const;
    std::string stateFileBytes() const;
    /// The names in the metadata folder.
    std::vector<std::string> metadata() const;

private:
    TemporaryFolder folder_;
    common::RootPath root_;
};

/// How `deserialize` takes the repository's state file, in one text: "loaded", or which error was
/// returned or thrown.
std::string loadOutcome(const StateRepository& repository);
/// The same for a file of these bytes.
std::string loadOutcome(std::string_view bytes);

/// The state in the repository's file. Throws what reading throws; an error fails the test.
common::State load(const StateRepository& repository);
common::State load(std::string_view bytes);

/// The bytes of a state file that is kept beside the tests.
std::string stateSample(const std::string& name);
/// What the sample "full" says.
common::State fullState();

}  // namespace qrv_test
