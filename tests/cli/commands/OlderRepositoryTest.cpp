#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::Outcome;
using qrv_test::readFile;
using testing::HasSubstr;

/// A repository that a program of the time made: six commits with a drawing, a merge and a tag,
/// packed in between; a merge that waits for a conflict, a staged file and a changed one.
class RepositoryOfAnOlderProgram : public testing::TestWithParam<std::string> {
protected:
    RepositoryOfAnOlderProgram() {
        const std::string archive =
            std::string(QRV_COMMAND_SAMPLES) + "/repository-" + GetParam() + ".tar.gz";
        const Outcome unpacked = qrv_test::runShell(
            temporary.path(), "tar --extract --gzip --no-same-owner --file '" + archive + "'");
        EXPECT_EQ(unpacked.status, 0) << unpacked;
    }

    Outcome qrv(std::vector<std::string> arguments) const {
        return qrv_test::runQrv(folder, std::move(arguments), {{"QRV_AUTHOR", "ada@office"}});
    }
    /// What a command that must go well prints.
    std::string run(std::vector<std::string> arguments) const {
        const Outcome outcome = qrv(std::move(arguments));
        EXPECT_EQ(outcome.status, 0) << outcome;
        return outcome.output;
    }
    std::string drawing() const { return readFile(folder / "plans/ground floor.dwg"); }

    const qrv_test::TemporaryFolder temporary;
    const fs::path folder = temporary / "project";
};

TEST_P(RepositoryOfAnOlderProgram, IsWhole) {
    const bool isInPacks = GetParam() == "layout3";
    EXPECT_EQ(run({"verify"}), std::string("Commits: 6\n") +
                                   (isInPacks ? "Objects: 0\nPacked objects: 9\n"
                                              : "Objects: 8\nPacked objects: 1\n") +
                                   "Drawing versions: 2\n"
                                   "Everything that was kept is there and whole\n");
}

TEST_P(RepositoryOfAnOlderProgram, IsAsItWasLeft) {
    const std::string status = run({"status"});
    EXPECT_THAT(status, HasSubstr("Branch 'master', commit 5: Third\nMerging "));
    EXPECT_THAT(status, HasSubstr("Staged for the next commit:\n  added     staged.txt\n"));
    EXPECT_THAT(status, HasSubstr("  notes/minutes.txt (modified here, modified there)\n"));
    EXPECT_THAT(status, HasSubstr("  modified  side.txt\n"));
    EXPECT_EQ(run({"name"}), "Old plans\n");
    EXPECT_EQ(run({"show", "v1:notes/minutes.txt"}), "one\ntwo\nthree\n");
}

TEST_P(RepositoryOfAnOlderProgram, IsContinued) {
    run({"resolve", "notes/minutes.txt", "--theirs"});
    run({"add", "--all"});
    EXPECT_EQ(run({"commit", "-m", "Merged"}), "Commit 7 on master: Merged\n");
    EXPECT_EQ(drawing().substr(4000, 4), "door");
    EXPECT_EQ(run({"switch", "-c", "again", "v1"}), "On branch 'again'; files changed: 7\n");
    EXPECT_EQ(drawing().size(), 9006U);
    EXPECT_NE(drawing().substr(4000, 4), "door");
    EXPECT_EQ(readFile(folder / "gone.txt"), "for a while\n");
    run({"gc"});
    run({"switch", "master"});
    EXPECT_EQ(drawing().substr(4000, 4), "door");
    EXPECT_EQ(readFile(folder / "notes/minutes.txt"), "one\nside\nthree\n");
    EXPECT_THAT(run({"verify"}), HasSubstr("Commits: 7\n"));
}

TEST_P(RepositoryOfAnOlderProgram, ComesIntoPacksAsAWhole) {
    run({"resolve", "notes/minutes.txt", "--theirs"});
    run({"commit", "-m", "Merged"});
    EXPECT_THAT(run({"gc"}), HasSubstr("dropped: 0 (0 bytes)\nDrawing versions dropped: 0"));
    EXPECT_FALSE(fs::exists(folder / ".qrv/objects.pack"));
    EXPECT_TRUE(!fs::exists(folder / ".qrv/tf") || fs::is_empty(folder / ".qrv/tf"));
    EXPECT_THAT(run({"verify"}), HasSubstr("\nDrawing versions: 2\nEverything"));
    EXPECT_EQ(run({"show", "v1:notes/minutes.txt"}), "one\ntwo\nthree\n");
    run({"restore", "--force", "--from", "v1", "plans"});
    EXPECT_EQ(drawing().size(), 9006U);
    EXPECT_NE(drawing().substr(4000, 4), "door");
    run({"restore", "--force", "plans"});
    EXPECT_EQ(drawing().substr(4000, 4), "door");
}

// layout1: before the history had sums, and records beside it. layout2: with both. layout3: with
// URLs as bytes, stamps beside the files of HEAD, and everything in packs.
INSTANTIATE_TEST_SUITE_P(OfEachForm, RepositoryOfAnOlderProgram,
                         testing::Values("layout1", "layout2", "layout3"));

}  // namespace
