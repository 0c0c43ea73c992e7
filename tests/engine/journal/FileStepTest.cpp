#include <engine/base/Digest.h>
#include <engine/journal/FileStep.h>
#include <sys/ScopedFault.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/support/Effort.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::keepBeside;
using qrv::StepEnd;
using qrv::StepTarget;
using qrv_test::anyCaller;
using qrv_test::listTree;
using qrv_test::readFile;
using qrv_test::RecordingCaller;
using qrv_test::writeFile;
using testing::ElementsAre;

OdString digestOf(const std::string& contents) {
    return OdString(qrv::Digest::of(contents).c_str());
}

class FileStep : public testing::Test {
protected:
    static StepTarget target(const std::string& expected) {
        return {.path = *qrv::RelativePath::check(L"plans/plan.dwg"),
                .digest = expected.empty() ? OdString() : digestOf(expected),
                .seen = std::nullopt,
                .position = 7};
    }
    sys::NewFile newFile() const {
        sys::NewFile planned = std::move(*folder.newFile("plans/plan.dwg", 0644));
        EXPECT_FALSE(planned.write(std::string("planned")));
        EXPECT_FALSE(planned.close());
        return planned;
    }
    Expected<StepEnd> write(const StepTarget& step) const {
        return writeFile(folder, step, newFile(), anyCaller());
    }
    static std::string endOf(const Expected<StepEnd>& end) {
        if (!end)
            return end.error().message.toNarrow();
        return end->kind == StepEnd::Kind::done ? "done" : "left";
    }
    std::set<std::string> contentsOfFolder() const {
        std::set<std::string> contents;
        for (const auto& entry : fs::directory_iterator(temporary / "plans"))
            contents.insert(readFile(entry.path()));
        return contents;
    }
    std::vector<std::string> tree() const { return listTree(temporary.path()); }

    const qrv_test::TemporaryFolder temporary;
    const sys::Folder folder = *sys::Folder::open(temporary.path());
    const fs::path file = temporary / "plans/plan.dwg";
};

TEST_F(FileStep, ReplacesWhatIsAsExpected) {
    writeFile(file, "old");
    const Expected<StepEnd> end = write(target("old"));
    EXPECT_EQ(endOf(end), "done");
    EXPECT_EQ(readFile(file), "planned");
    EXPECT_EQ(end->written->number, folder.stamp("plans/plan.dwg")->number);
    EXPECT_THAT(tree(), ElementsAre("plans/", "plans/plan.dwg"));
}

// Symptom: a drawing that its program saved while a command ran was overwritten.
// Cause: it was replaced without a look at what was replaced.
TEST_F(FileStep, GivesBackWhatAnotherProgramSaved) {
    writeFile(file, "a day's work");
    EXPECT_EQ(endOf(write(target("old"))), "left");
    EXPECT_EQ(readFile(file), "a day's work");
    EXPECT_EQ(endOf(removeFile(folder, target("old"), anyCaller())), "left");
    EXPECT_EQ(readFile(file), "a day's work");
    EXPECT_THAT(tree(), ElementsAre("plans/", "plans/plan.dwg"));
}

TEST_F(FileStep, BelievesAVersionOnlyAsItWasSeen) {
    writeFile(file, "old");
    StepTarget step = target("something else");
    step.seen = *folder.stamp("plans/plan.dwg");
    const fs::file_time_type time = fs::last_write_time(file);
    writeFile(file, "new");
    fs::last_write_time(file, time);
    EXPECT_EQ(endOf(write(step)), "left");
    EXPECT_EQ(readFile(file), "new");
    step.seen = *folder.stamp("plans/plan.dwg");
    EXPECT_EQ(endOf(write(step)), "done");
    EXPECT_EQ(readFile(file), "planned");
}

TEST_F(FileStep, LeavesAFileThatSomebodyHasOpenForWriting) {
    writeFile(file, "old");
    std::ofstream writer(file, std::ios::app);
    EXPECT_EQ(endOf(write(target("old"))), "left");
    EXPECT_EQ(endOf(removeFile(folder, target("old"), anyCaller())), "left");
    writer << " and more" << std::flush;
    EXPECT_EQ(readFile(file), "old and more");
    writer.close();
    EXPECT_EQ(endOf(write(target("old and more"))), "done");
}

TEST_F(FileStep, DoesNotTakeANameThatIsTakenMeanwhile) {
    writeFile(file, "somebody else's");
    EXPECT_EQ(endOf(write(target(""))), "left");
    EXPECT_EQ(readFile(file), "somebody else's");
    fs::remove(file);
    EXPECT_EQ(endOf(write(target(""))), "done");
    EXPECT_EQ(readFile(file), "planned");
    EXPECT_THAT(tree(), ElementsAre("plans/", "plans/plan.dwg"));
}

TEST_F(FileStep, LeavesLinksAndFoldersWhereTheyAre) {
    fs::create_directory(temporary / "plans");
    fs::create_symlink("elsewhere", file);
    EXPECT_EQ(endOf(write(target("old"))), "left");
    EXPECT_EQ(endOf(removeFile(folder, target("old"), anyCaller())), "left");
    EXPECT_EQ(fs::read_symlink(file), "elsewhere");
    fs::remove(file);
    sys::NewFile planned = newFile();
    fs::create_directory(file);
    EXPECT_EQ(endOf(writeFile(folder, target("old"), std::move(planned), anyCaller())), "left");
    EXPECT_EQ(endOf(removeFile(folder, target("old"), anyCaller())), "done");
    EXPECT_TRUE(fs::is_directory(file));
}

TEST_F(FileStep, WritesWhatSomebodyRemovedMeanwhile) {
    EXPECT_EQ(endOf(write(target("old"))), "done");
    EXPECT_EQ(readFile(file), "planned");
}

TEST_F(FileStep, RemovesAFileAndTheFoldersThatAreEmptyThen) {
    writeFile(file, "old");
    EXPECT_EQ(endOf(removeFile(folder, target("old"), anyCaller())), "done");
    EXPECT_THAT(tree(), ElementsAre());
    EXPECT_EQ(endOf(removeFile(folder, target("old"), anyCaller())), "done");
}

TEST_F(FileStep, KeepsWhatTwoSavesLeaveUnderNamesOfTheirOwn) {
    writeFile(temporary / "plans/.7-0.qrv-aside", "first save");
    writeFile(temporary / "plans/plan.kept-1.dwg", "from before");
    const sys::Folder entries = *folder.openFolder("plans");
    RecordingCaller caller;
    EXPECT_TRUE(keepBeside(entries, ".7-0.qrv-aside", "plan.dwg", caller));
    EXPECT_EQ(readFile(temporary / "plans/plan.kept-2.dwg"), "first save");
    EXPECT_THAT(
        caller.notes,
        ElementsAre("Note: another program saved 'plan.dwg' meanwhile; what it saved first is kept "
                    "beside it as 'plan.kept-2.dwg'"));
    writeFile(temporary / "plans/.7-0.qrv-aside", "x");
    EXPECT_TRUE(keepBeside(entries, ".7-0.qrv-aside", ".hidden", caller));
    EXPECT_THAT(tree(), ElementsAre("plans/", "plans/.hidden.kept-1", "plans/plan.kept-1.dwg",
                                    "plans/plan.kept-2.dwg"));
}

// As on a file system that cannot exchange two names, and at every other call that may fail: of the
// old and the new file one has the name, and what is not planned lies somewhere.
TEST_F(FileStep, LosesNothingWhicheverCallFails) {
    std::size_t failures = 0;
    for (const int cause : {EINVAL, EIO}) {
        for (const char* const lying : {"old", "a day's work"}) {
            bool hasFired = true;
            for (int nth = 1; hasFired; ++nth) {
                fs::remove_all(temporary / "plans");
                writeFile(file, lying);
                sys::NewFile planned = newFile();
                {
                    const sys::ScopedFault fault(nth, cause);
                    static_cast<void>(
                        writeFile(folder, target("old"), std::move(planned), anyCaller()));
                    hasFired = fault.hasFired();
                }
                failures += hasFired ? 1 : 0;
                EXPECT_TRUE(fs::exists(file)) << nth;
                // The planned version is in the storage, and so is the expected one.
                const bool isKept = contentsOfFolder().contains(lying);
                EXPECT_TRUE(isKept || std::string(lying) == "old") << nth;
            }
        }
    }
    EXPECT_GT(failures, 20U);
    qrv_test::tellTried(failures, "failing calls");
}

}  // namespace
