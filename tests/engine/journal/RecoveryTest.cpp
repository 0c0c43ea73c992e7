#include <engine/journal/Perform.h>
#include <engine/journal/Recovery.h>
#include <sys/ScopedFault.h>
#include <tests/engine/journal/TwoBranches.h>
#include <tests/support/Effort.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv::findChanges;
using qrv::WorkingTree;
using qrv_test::readFile;
using testing::HasSubstr;

/// A switch from "old" to "new" that was noted, and interrupted before it did anything.
class Recovery : public qrv_test::TwoBranches {
protected:
    Recovery() { noteSwitch(L"new"); }

    /// As a command leaves it that was killed after it had noted its entry.
    void noteSwitch(const wchar_t* branch) const {
        noteEntry(workingTree->repository().history(), planOfSwitch(*workingTree, branch));
    }

    std::string recovered() const {
        try {
            const Expected<void> done = recover(*workingTree);
            return done ? "recovered" : done.error().message.toNarrow();
        } catch (const qrv::DatabaseError& error) {
            return error.what();
        }
    }
    bool isNoted() const { return notedEntry(workingTree->repository().history()).has_value(); }

    const std::unique_ptr<WorkingTree> workingTree = project.open();
};

TEST_F(Recovery, FinishesTheRest) {
    EXPECT_EQ(recovered(), "recovered");
    EXPECT_FALSE(isNoted());
    EXPECT_EQ(readFile(project / "a.txt"), "new a");
    EXPECT_TRUE(findChanges(*workingTree)->isEmpty());
}

// Symptom: an error of the disk passed for a person's change, the entry was forgotten, and the next
// commit reverted the other branch.
// Cause: whatever could not be read counted as changed.
TEST_F(Recovery, StopsAndKeepsTheEntryWhicheverCallFails) {
    int stops = 0;
    bool hasFired = true;
    for (int nth = 1; hasFired; nth += 5) {
        const bool isOnNew = workingTree->repository().branch() == OdString(L"new");
        if (!isNoted())
            noteSwitch(isOnNew ? L"old" : L"new");
        std::string answer;
        {
            const sys::ScopedFault fault(nth, EIO);
            answer = recovered();
            hasFired = fault.hasFired();
        }
        if (answer != "recovered") {
            ++stops;
            // A failing history may have forgotten the entry already, with everything done.
            const bool isOfHistory = answer.find("qrv.db' cannot be used") != std::string::npos;
            EXPECT_TRUE(isOfHistory || isNoted()) << nth << answer;
            EXPECT_TRUE(isOfHistory ||
                        answer.find("was interrupted, and what it left") != std::string::npos)
                << nth << answer;
            ASSERT_EQ(recovered(), "recovered") << nth;
        }
        EXPECT_FALSE(isNoted()) << nth;
        EXPECT_EQ(readFile(project / "a.txt"), isOnNew ? "old a" : "new a") << nth;
        EXPECT_EQ(fs::exists(project / "fresh/c.dwg"), !isOnNew) << nth;
        EXPECT_EQ(fs::exists(project / "gone/b.txt"), isOnNew) << nth;
        EXPECT_TRUE(findChanges(*workingTree)->isEmpty()) << nth;
    }
    EXPECT_GT(stops, 5);
    qrv_test::tellTried(static_cast<std::size_t>(stops), "failing calls");
}

TEST_F(Recovery, StopsWhileAFileOfTheEntryIsOpen) {
    std::ofstream writer(project / "a.txt", std::ios::app);
    EXPECT_THAT(recovered(), HasSubstr("open in another program"));
    EXPECT_TRUE(isNoted());
    writer.close();
    EXPECT_EQ(recovered(), "recovered");
}

TEST_F(Recovery, GivesBackWhatWasMovedAsideWhenThePowerFailed) {
    const std::string aside = ".0-0.qrv-aside";
    // The first step is that of "a.txt": the planned file has the name already.
    project.write({{"a.txt", "new a"}, {aside, "a day's work"}, {"fresh/.1-0.qrv-aside", "new c"}});
    EXPECT_EQ(recovered(), "recovered");
    EXPECT_EQ(readFile(project / "a.txt"), "a day's work");
    EXPECT_EQ(readFile(project / "fresh/c.dwg"), "new c");
    EXPECT_FALSE(fs::exists(project / aside));
    EXPECT_FALSE(fs::exists(project / "fresh/.1-0.qrv-aside"));
    EXPECT_EQ(qrv_test::shown(*findChanges(*workingTree)), "a.txt modified, ");
}

TEST_F(Recovery, KeepsTheSaveBeforeTheLastBesideIt) {
    project.write({{"a.txt", "second save"}, {".0-0.qrv-aside", "first save"}});
    EXPECT_EQ(recovered(), "recovered");
    EXPECT_EQ(readFile(project / "a.txt"), "second save");
    EXPECT_EQ(readFile(project / "a.kept-1.txt"), "first save");
}

// Symptom: a file that a person had changed, and that a recovery left as it was, passed for
// unchanged, and the next switch replaced it.
// Cause: the time was noted that the file had then.
TEST_F(Recovery, KnowsNothingOfAFileThatItLeft) {
    project.write({{"a.txt", "a day's work"}, {"fresh/c.dwg", "new c"}});
    for (const char* const path : {"a.txt", "fresh/c.dwg"})
        fs::last_write_time(project / path,
                            fs::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_EQ(recovered(), "recovered");
    qrv::History& history = workingTree->repository().history();
    EXPECT_EQ(history.headFile(L"a.txt")->stamp, std::nullopt);
    EXPECT_EQ(history.headFile(L"fresh/c.dwg")->stamp, *workingTree->folder().stamp("fresh/c.dwg"));
}

TEST_F(Recovery, HidesWhatIsOnItsWayFromTheScan) {
    project.write({{".12-3.qrv-tmp", "half"}, {"fresh/.0-0.qrv-aside", "x"}, {".other", "y"}});
    EXPECT_EQ(qrv_test::shown(*findChanges(*workingTree)), ".other added, ");
}

}  // namespace
