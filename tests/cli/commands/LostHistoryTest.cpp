#include <tests/cli/commands/HistoryProject.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::writeFile;

class LostHistory : public testing::Test {
protected:
    LostHistory() {
        project.write({{"plan.dwg", std::string(5000, 'x')}, {"parts.csv", "1;bolt\n"}});
        project.commit("first");
        project.run({"tag", "v1"});
    }
    void emptyHistory() const { fs::resize_file(project / ".qrv/qrv.db", 0); }
    /// All of these, so that each trace is looked at alone.
    void removeTracesBut(const std::string& kept) const {
        for (const char* const trace : {"references", "commits", "packs", "baseline"}) {
            if (kept != trace)
                fs::remove_all(project / (std::string(".qrv/") + trace));
        }
        if (kept != "state")
            writeFile(project / ".qrv/qrv.state", R"({"head": {"reference": "master"}})");
    }
    std::string refusal(const std::string& trace) const {
        return "qrv: The history '" + root + "/.qrv/qrv.db' is missing or empty, although '.qrv/" +
               trace + "' shows that there was one. ";
    }

    const HistoryProject project;
    const std::string root = fs::canonical(project.folder.path());
};

// Symptom: a repository whose qrv.db a sync program had emptied said "no commit yet", began again
// at number 1, and gc dropped all that was kept. Cause: no history counted as a new one, always.
TEST_F(LostHistory, DoesNotPassForANewRepository) {
    for (const bool isRemoved : {false, true}) {
        if (isRemoved)
            fs::remove(project / ".qrv/qrv.db");
        else
            emptyHistory();
        const auto before = contentsOf(project.folder.path());
        for (const std::vector<std::string>& command :
             std::vector<std::vector<std::string>>{{"status"},
                                                   {"log"},
                                                   {"show"},
                                                   {"diff"},
                                                   {"branch"},
                                                   {"tag"},
                                                   {"gc"},
                                                   {"add", "--all"},
                                                   {"commit", "-m", "x"},
                                                   {"restore", "parts.csv"},
                                                   {"switch", "-c", "x"},
                                                   {"merge", "x"}}) {
            const Outcome outcome = project.qrv(command);
            EXPECT_EQ(outcome.status, 1) << command.front();
            EXPECT_EQ(outcome.output, "") << command.front();
            EXPECT_THAT(outcome.messages,
                        testing::StartsWith(refusal("").substr(0, root.size() + 60)))
                << command.front();
        }
        EXPECT_EQ(project.qrv({"verify"}).status, 1);
        auto after = contentsOf(project.folder.path());
        after.erase(".qrv/lock");
        auto expected = before;
        expected.erase(".qrv/lock");
        EXPECT_EQ(after, expected);
    }
}

TEST_F(LostHistory, IsKnownByEachOfItsTraces) {
    emptyHistory();
    const auto whole = contentsOf(project.folder.path());
    const auto restoreAll = [&] {
        for (const auto& [path, bytes] : whole) {
            if (!path.ends_with('/'))
                writeFile(project / path, bytes);
        }
    };
    for (const char* const trace : {"packs", "baseline"}) {
        restoreAll();
        removeTracesBut(trace);
        const Outcome outcome = project.qrv({"log"});
        EXPECT_EQ(outcome.status, 1) << trace;
        EXPECT_THAT(outcome.messages, testing::HasSubstr(std::string("although '.qrv/") + trace));
    }
    restoreAll();
    removeTracesBut("state");
    // An earlier program filled the index.
    writeFile(project / ".qrv/qrv.state",
              R"({"head": {"reference": "master"}, "index": [{"path": "a.txt", )"
              R"("data": {"last_checked": 1, "modified": false}}]})");
    EXPECT_THAT(project.qrv({"log"}).messages, testing::StartsWith(refusal("qrv.state")));
    removeTracesBut("");
    EXPECT_EQ(project.qrv({"log"}).status, 0);
}

TEST_F(LostHistory, IsNotSeenInANewRepository) {
    const HistoryProject fresh;
    EXPECT_EQ(fresh.qrv({"status"}).status, 0);
    // As a process leaves it that was killed while it made the history.
    writeFile(fresh / ".qrv/qrv.db", "");
    EXPECT_EQ(fresh.qrv({"status"}).status, 0);
    fresh.write({{"a", "a"}});
    fresh.commit("first");
    EXPECT_EQ(fresh.qrv({"verify"}).status, 0);
}

}  // namespace
