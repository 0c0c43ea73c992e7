#pragma once

#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/base/RecordingCaller.h>

#include <gmock/gmock.h>

#include <string>

namespace qrv_test {

/// Two branches that went apart: "side" changed b.txt, "master" changed a.txt and is the current
/// one. What is asked of the engine runs in this process.
class TwoSides : public testing::Test {
protected:
    TwoSides() {
        project.write({{"a.txt", "a"}, {"b.txt", "b"}});
        project.commit("First");
        project.run({"switch", "--create", "side"});
        project.write({{"b.txt", "b of the side"}});
        project.commit("On the side");
        project.run({"switch", "master"});
        project.write({{"a.txt", "a of master"}});
        project.commit("On master");
    }

    std::string root() const { return project.folder.path(); }
    std::string contents(const char* path) const { return readFile(project / path); }

    HistoryProject project;
    RecordingCaller caller;
};

/// The message of a failure; "done" when there was none.
template <class Result>
std::string failureOf(const Result& result) {
    return result ? "done" : result.error().message.toNarrow();
}

}  // namespace qrv_test
