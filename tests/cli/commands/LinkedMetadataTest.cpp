#include <tests/cli/commands/HistoryProject.h>
#include <tests/support/Effort.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdio.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;
using testing::HasSubstr;
using testing::Not;

using Command = std::vector<std::string>;

/// Each that looks at a repository or changes one.
std::vector<Command> allCommands(const std::string& elsewhere) {
    return {{"init"},
            {"init", "--name", "new", "--cad-ignores"},
            {"files"},
            {"status"},
            {"add", "--all"},
            {"add", "a.txt"},
            {"unstage", "--all"},
            {"commit", "-m", "x"},
            {"restore", "a.txt", "--force"},
            {"restore", "a.txt", "--to", elsewhere},
            {"switch", "side"},
            {"switch", "--create", "new"},
            {"merge", "side"},
            {"merge", "--abort"},
            {"resolve", "a.txt", "--mine"},
            {"ignore", "list"},
            {"ignore", "check", "a.bak"},
            {"ignore", "add", "*.x"},
            {"verify"},
            {"gc"},
            {"gc", "--dry-run"},
            {"log"},
            {"show"},
            {"diff"},
            {"branch"},
            {"branch", "new"},
            {"branch", "--delete", "side"},
            {"tag"},
            {"tag", "new"},
            {"state"},
            {"name"},
            {"name", "new"},
            {"projects", "add"},
            {"log-note", "text"},
            {"locate", "po:" + std::string(64, '0')}};
}

/// A repository in which a part of the metadata folder lies elsewhere, behind a link.
class LinkedMetadata : public testing::TestWithParam<const char*> {
protected:
    LinkedMetadata() {
        project.write({{"a.txt", "text"}, {"b.dwg", "drawing"}});
        project.commit("First");
        project.run({"switch", "--create", "side"});
        project.write({{"a.txt", "other"}});
        project.commit("Second");
        project.run({"switch", "master"});
        project.run({"name", "SECRET"});
        project.write({{"a.txt", "changed"}});
    }

    const HistoryProject project;
    const TemporaryFolder outside;
};

// Symptom: a command wrote into the file that a link in `.qrv` named, or printed what stood there.
// Cause: the library and SQLite opened the files of `.qrv` by their paths, and followed the links.
TEST_P(LinkedMetadata, IsRefusedByEveryCommandAndReachesNothingOutside) {
    const fs::path part = project / GetParam();
    if (fs::exists(part))
        fs::rename(part, outside / "part");
    else
        writeFile(outside / "part", "SECRET");
    fs::create_symlink(outside / "part", part);
    const std::map<std::string, std::string> before = contentsOf(outside.path());
    const std::string expected = "/" + std::string(GetParam()) +
                                 "' is a symbolic link, and in a repository none is followed\n";
    const std::vector<Command> commands = allCommands(outside / "new");
    // Under a sanitizer each part meets some of the commands, and each command some of the parts.
    constexpr std::size_t step = qrv_test::isSanitized ? 6 : 1;
    const std::size_t first = std::string(GetParam()).size() % step;
    std::size_t attacks = 0;
    for (std::size_t index = first; index < commands.size(); index += step, ++attacks) {
        const Command& command = commands[index];
        const Outcome outcome = project.qrv(command);
        EXPECT_EQ(outcome.status, 1) << command[0] << outcome;
        EXPECT_EQ(outcome.output, "") << command[0];
        EXPECT_THAT(outcome.messages, HasSubstr(expected)) << command[0];
        EXPECT_THAT(outcome.messages, Not(HasSubstr("SECRET"))) << command[0];
        ASSERT_EQ(contentsOf(outside.path()), before) << command[0];
    }
    EXPECT_GE(attacks, commands.size() / step);
    qrv_test::tellTried(attacks, "attacks");
}

INSTANTIATE_TEST_SUITE_P(EachPart, LinkedMetadata,
                         testing::Values(".qrv", ".qrv/qrv.state", ".qrv/qrv.db", ".qrv/qrv.log",
                                         ".qrv/lock", ".qrv/baseline", ".qrv/objects.pack",
                                         ".qrv/objects", ".qrv/tf", ".qrv/properties",
                                         ".qrv/properties/ignore", ".qrv/properties/project_name"));

/// Lets a folder and a link change places over and over, until its end.
class Swapping {
public:
    Swapping(fs::path folder, fs::path link) : folder_(std::move(folder)), link_(std::move(link)) {
        thread_ = std::thread([this] {
            while (!hasEnded_)
                swapForAMoment();
        });
    }
    Swapping(const Swapping&) = delete;
    Swapping& operator=(const Swapping&) = delete;
    ~Swapping() {
        hasEnded_ = true;
        thread_.join();
    }

private:
    void exchange() const {
        EXPECT_EQ(::renameat2(AT_FDCWD, folder_.c_str(), AT_FDCWD, link_.c_str(), RENAME_EXCHANGE),
                  0);
    }
    /// The folder is at its place for longer, so that commands come far.
    void swapForAMoment() const {
        exchange();
        std::this_thread::sleep_for(std::chrono::microseconds(100));
        exchange();
        std::this_thread::sleep_for(std::chrono::microseconds(700));
    }

    const fs::path folder_;
    const fs::path link_;
    std::atomic<bool> hasEnded_ = false;
    std::thread thread_;
};

class SwappedMetadata : public testing::TestWithParam<const char*> {};

// Symptom: while a folder was exchanged for a link, commits wrote outside and lacked their files.
// Cause: a check of the path, and then an opening of that path.
TEST_P(SwappedMetadata, LetsNoCommitWriteOutsideOrLackItsFiles) {
    const HistoryProject project;
    const TemporaryFolder outside;
    project.write({{"a.txt", "text"}, {"b.dwg", "drawing"}});
    project.commit("First");
    fs::create_directory_symlink(outside.path(), project / ".qrv/link");
    constexpr int commits = qrv_test::isSanitized ? 6 : 25;
    {
        const Swapping swapping(project / GetParam(), project / ".qrv/link");
        for (int number = 0; number < commits; ++number) {
            const std::string text = std::to_string(number);
            project.write({{"a.txt", text}, {text + ".dwg", text}});
            project.qrv({"add", "--all"});
            project.qrv({"commit", "-m", "x"});
        }
    }
    EXPECT_THAT(contentsOf(outside.path()), testing::IsEmpty());
    EXPECT_EQ(project.qrv({"verify"}).status, 0);
    qrv_test::tellTried(std::size_t{commits}, "attacks");
}

INSTANTIATE_TEST_SUITE_P(EachFolder, SwappedMetadata, testing::Values(".qrv/packs"));

// Symptom: a commit wrote commands of an attacker into the victim's file for the shell.
// Cause: the log was a link to that file, and the name of a branch stood in it as it was.
TEST(HostileLog, LetsACommitWriteNothingIntoAnotherFile) {
    const HistoryProject project;
    const TemporaryFolder home;
    project.write({{"a.txt", "text"}});
    project.commit("First");
    project.run({"switch", "--create", "$(touch${IFS}ran)"});
    writeFile(home / ".bashrc", "# mine\n");
    fs::remove(project / ".qrv/qrv.log");
    fs::create_symlink(home / ".bashrc", project / ".qrv/qrv.log");
    project.write({{"a.txt", "changed"}});
    EXPECT_EQ(project.qrv({"add", "--all"}).status, 1);
    EXPECT_EQ(project.qrv({"commit", "-m", "Second"}).status, 1);
    EXPECT_EQ(project.qrv({"log-note", "text"}).status, 1);
    EXPECT_EQ(readFile(home / ".bashrc"), "# mine\n");
}

TEST(HostileLog, RunsNothingWhenAShellReadsIt) {
    const HistoryProject project;
    project.write({{"a.txt", "text"}});
    project.commit("First");
    for (const std::string branch :
         {"$(touch${IFS}ran)", "a';touch${IFS}ran;'", "`>ran`", "x;>ran"}) {
        project.run({"switch", "--create", branch});
        project.write({{"a.txt", branch}});
        project.commit("On it");
        project.run({"tag", branch});
        project.run({"tag", "--delete", branch});
        project.run({"branch", "x" + branch});
        project.run({"branch", "--delete", "x" + branch});
        project.run({"switch", "master"});
        project.run({"merge", branch});
    }
    EXPECT_NE(qrv_test::runShell(project.folder.path(), ". ./.qrv/qrv.log").status, 126);
    EXPECT_FALSE(fs::exists(project / "ran"));
}

}  // namespace
