#include <platform/ut/ScopedFault.h>
#include <platform/ut/TextFile.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::TemporaryFolder;
using Tree = std::vector<std::string>;

constexpr const char* oldText = "the old contents";
constexpr const char* newText = "the new contents, which are longer";
constexpr const char* noFile = "no file";

// A folder that may hold an old file, whose permissions the process's mask would not give a new
// one, so that replacing it takes every call there is.
class Target {
public:
    explicit Target(bool hasOld) {
        if (!hasOld)
            return;
        qrv_test::writeFile(folder_ / "file", oldText);
        fs::permissions(folder_ / "file", fs::perms(0646));
    }

    bool write() const {
        ut::TextFile file(folder_.text("file"));
        file.addLine(newText);
        return file.write();
    }
    std::string contents() const {
        return fs::exists(folder_ / "file") ? qrv_test::readFile(folder_ / "file") : noFile;
    }
    // The names in the folder beside the file's own.
    Tree strayFiles() const {
        Tree names = qrv_test::listTree(folder_.path());
        std::erase(names, "file");
        return names;
    }

private:
    TemporaryFolder folder_;
};

auto openDescriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

struct Outcome {
    bool isWritten;
    std::string contents;
    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* stream) {
    *stream << (outcome.isWritten ? "true, " : "false, ") << outcome.contents;
}

// What a write comes to when its first call fails, its second, and so on to the last.
std::vector<Outcome> outcomesOfFailures(bool hasOld, int errorNumber) {
    std::vector<Outcome> outcomes;
    for (int nth = 1;; ++nth) {
        const Target target(hasOld);
        const auto descriptors = openDescriptors();
        bool hasFired = false;
        bool isWritten = false;
        {
            const ut::ScopedFault fault(nth, errorNumber);
            isWritten = target.write();
            hasFired = fault.hasFired();
        }
        EXPECT_EQ(target.strayFiles(), Tree{}) << "call " << nth;
        EXPECT_EQ(openDescriptors(), descriptors) << "call " << nth;
        if (!hasFired) {
            EXPECT_EQ((Outcome{isWritten, target.contents()}), (Outcome{true, newText}));
            return outcomes;
        }
        outcomes.push_back({isWritten, target.contents()});
    }
}

TEST(AtomicWriteFault, EachFailureLeavesTheOldFileAndNothingBeside) {
    const Outcome kept = {false, oldText};
    const std::vector<Outcome> expected = {
        kept,              // opening the folder
        kept,              // looking at the old file
        kept,              // asking whether it may be written
        kept,              // making the new one
        kept,              // asking its permissions
        kept,              // changing them
        kept,              // writing
        kept,              // flushing
        kept,              // closing
        kept,              // renaming
        {false, newText},  // flushing the folder
        {true, newText},   // closing the folder
    };
    for (const int errorNumber : {EIO, ENOSPC, EACCES, EDQUOT, EROFS, EMFILE})
        EXPECT_EQ(outcomesOfFailures(true, errorNumber), expected) << errorNumber;
}

TEST(AtomicWriteFault, EachFailureMakesNoFileWhereNoneWas) {
    const Outcome none = {false, noFile};
    const std::vector<Outcome> expected = {
        none,              // opening the folder
        none,              // looking for an old file
        none,              // making the new one
        none,              // writing
        none,              // flushing
        none,              // closing
        none,              // renaming
        {false, newText},  // flushing the folder
        {true, newText},   // closing the folder
    };
    for (const int errorNumber : {EIO, ENOSPC, EACCES, EDQUOT, EROFS, EMFILE})
        EXPECT_EQ(outcomesOfFailures(false, errorNumber), expected) << errorNumber;
}

TEST(AtomicWriteFault, AnInterruptionIsNoFailure) {
    for (const bool hasOld : {true, false}) {
        const std::vector<Outcome> outcomes = outcomesOfFailures(hasOld, EINTR);
        EXPECT_GE(outcomes.size(), 9U);
        EXPECT_THAT(outcomes, testing::Each(Outcome{true, newText}));
    }
}

TEST(AtomicWriteFault, AFolderThatCannotBeFlushedIsNoFailure) {
    constexpr int flushOfTheFolder = 11;
    for (const int errorNumber : {EINVAL, ENOTSUP}) {
        const std::vector<Outcome> outcomes = outcomesOfFailures(true, errorNumber);
        ASSERT_EQ(outcomes.size(), 12U);
        EXPECT_EQ(outcomes[flushOfTheFolder - 1], (Outcome{true, newText})) << errorNumber;
        EXPECT_EQ(outcomes[flushOfTheFolder - 4], (Outcome{false, oldText})) << errorNumber;
    }
}

// Runs the write in a process of its own that is killed at its nth call. True when it was.
bool isKilledAtCall(int nth, const Target& target) {
    const pid_t child = fork();
    if (child == 0) {
        const ut::ScopedFault fault(nth, ut::ScopedFault::kKillProcess);
        _exit(target.write() ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    if (WIFSIGNALED(status)) {
        EXPECT_EQ(WTERMSIG(status), SIGKILL);
        return true;
    }
    EXPECT_EQ(WEXITSTATUS(status), 0);
    return false;
}

// The contents found after a kill at the first call, the second, and so on to the last.
Tree contentsAfterKills(bool hasOld) {
    Tree contents;
    for (int nth = 1;; ++nth) {
        const Target target(hasOld);
        const bool isKilled = isKilledAtCall(nth, target);
        for (const std::string& name : target.strayFiles())
            EXPECT_TRUE(name.starts_with(".") && name.ends_with(".qrv-tmp")) << name;
        if (!isKilled) {
            EXPECT_EQ(target.contents(), newText);
            return contents;
        }
        contents.push_back(target.contents());
        EXPECT_TRUE(target.write()) << "after a kill at call " << nth;
        EXPECT_EQ(target.contents(), newText) << "after a kill at call " << nth;
    }
}

TEST(AtomicWriteFault, AKillLeavesTheOldFileOrTheNewOne) {
    Tree expected(10, oldText);
    expected.insert(expected.end(), 2, newText);
    EXPECT_EQ(contentsAfterKills(true), expected);
}

TEST(AtomicWriteFault, AKillLeavesNoFileOrAWholeOne) {
    Tree expected(7, noFile);
    expected.insert(expected.end(), 2, newText);
    EXPECT_EQ(contentsAfterKills(false), expected);
}

}  // namespace
