#include <tests/cli/commands/VerifyProject.h>

#include <gmock/gmock.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::flipByte;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::writeFile;

using VerifyState = qrv_test::VerifyProject;

/// With a baseline that a look kept.
class VerifyBaseline : public qrv_test::VerifyProject {
protected:
    VerifyBaseline() {
        for (const auto& [path, contents] : contentsOf(project.folder.path())) {
            if (path.find(".qrv/") != 0 || path == ".qrv/properties/ignore")
                makeOlder(path, std::chrono::hours(1));
        }
        // The first one reads the files again.
        project.run({"status"});
        project.run({"status"});
    }
    void makeOlder(const std::string& path, std::chrono::seconds by) const {
        fs::last_write_time(project / path, fs::last_write_time(project / path) - by);
    }

    const fs::path baseline = project / ".qrv/baseline";
    const std::string damage = "'.qrv/baseline' is damaged (qrv status makes it anew)";
};

TEST_F(VerifyBaseline, FindsNothingInAWholeOne) {
    ASSERT_TRUE(fs::exists(baseline));
    EXPECT_EQ(project.qrv({"verify"}), (Outcome{0, counts + allIsWell, ""}));
}

TEST_F(VerifyBaseline, FindsAFlippedBit) {
    flipByte(baseline, 100);
    EXPECT_EQ(project.qrv({"verify"}), problem(counts, damage));
    project.run({"status"});
    EXPECT_EQ(project.qrv({"verify"}), (Outcome{0, counts + allIsWell, ""}));
}

TEST_F(VerifyBaseline, FindsOneThatSaysSomethingElseThanTheHistory) {
    std::string bytes = qrv_test::readFile(baseline);
    const std::size_t name = bytes.find(".csv");
    ASSERT_NE(name, std::string::npos);
    bytes.replace(name, 4, ".cvs");
    const std::size_t body = 15 + 64;
    bytes.replace(15, 64, digestOf(bytes.substr(body)));
    qrv_test::writeFile(baseline, bytes);
    EXPECT_EQ(project.qrv({"verify"}), problem(counts, damage));
}

TEST_F(VerifyBaseline, MindsNoOldOne) {
    project.write({{"parts.csv", "3;bolts\n"}});
    project.commit("third");
    EXPECT_EQ(project.qrv({"verify"}).status, 0);
}

TEST_F(VerifyState, FindsAStateThatCannotBeRead) {
    writeFile(project / ".qrv/qrv.state", R"({"head": {"reference": 3}})");
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, testing::StartsWith(counts + "\nProblems:\n"));
    writeFile(project / ".qrv/qrv.state", R"({"head": {"reference": "ma)");
    EXPECT_EQ(project.qrv({"verify"}),
              problem(counts,
                      "The state file '" + root + "/.qrv/qrv.state' ends in the middle of a text"));
    fs::remove(project / ".qrv/qrv.state");
    EXPECT_EQ(project.qrv({"verify"}),
              problem(counts, "No state file found at " + root + "/.qrv/qrv.state"));
}

TEST_F(VerifyState, FindsAStateOfAnotherBranch) {
    writeFile(project / ".qrv/qrv.state", R"({"head": {"reference": "side"}})");
    EXPECT_EQ(project.qrv({"verify"}),
              problem(counts,
                      "The state is damaged: it names the branch 'side', but the files of HEAD are "
                      "not those of that branch"));
}

TEST_F(VerifyState, FindsPathsInTheStateThatCannotBe) {
    writeFile(project / ".qrv/qrv.state", R"({
        "head": {"reference": "master"},
        "staged_files": [
            {"path": "a.txt", "file_change": "added"},
            {"path": "a.txt", "file_change": "removed"},
            {"path": "../b.txt", "file_change": "added"}
        ],
        "conflicts": [
            {"path": "c.txt", "remote_url": "po:1", "local_type": "modified", "remote_type": "modified"}
        ]
    })");
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.messages, "qrv: Problems: 3\n");
    EXPECT_THAT(outcome.output,
                testing::HasSubstr("The state is damaged: 'a.txt' is staged twice"));
    EXPECT_THAT(outcome.output, testing::HasSubstr("The state is damaged: '../b.txt' "));
    EXPECT_THAT(outcome.output,
                testing::HasSubstr("The state is damaged: 'po:1' does not name a stored version"));
}

}  // namespace
