#include <engine/base/Digest.h>
#include <engine/diff/WorkingFiles.h>
#include <engine/journal/OpenTree.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/engine/paths/Paths.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

namespace {

using qrv::readWorkingFiles;
using qrv::WorkingChanges;
using qrv::WorkingTree;
using qrv_test::relative;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

using WorkingFiles = Expected<std::vector<qrv::Difference>>;

OdString digest(const char* bytes) {
    return OdString(qrv::Digest::of(bytes).c_str());
}

std::unique_ptr<WorkingTree> open(const TemporaryFolder& folder) {
    writeFile(folder / ".qrv/qrv.state", R"({"head": {"reference": "master"}})");
    return qrv::openTree(folder.path(), qrv::Repository::Use::change, qrv_test::anyCaller())
        .value();
}

/// A repository whose files "kept", "gone" and "other" are those of HEAD.
struct Office {
    TemporaryFolder folder;
    common::RootPath root = common::RootPath::get(folder.text(), true).value();
    std::unique_ptr<WorkingTree> workingTree = open(folder);

    Office() {
        for (const char* const name : {"kept", "gone", "other"}) {
            writeFile(folder / name, name);
            const OdString url = L"po:" + digest(name);
            workingTree->repository().history().changeHeadFiles({{relative(name), url, {}, 4}});
        }
    }
};

TEST(WorkingFiles, DifferFromHeadByWhatTheyHold) {
    const Office office;
    writeFile(office.folder / "other", "changed");
    writeFile(office.folder / "new", "new one");
    std::filesystem::remove(office.folder / "gone");
    WorkingChanges changes;
    changes.files.modified.emplace_back(L"other");
    changes.files.added.emplace_back(L"new");
    changes.files.removed.emplace_back(L"gone");
    const WorkingFiles files = readWorkingFiles(*office.workingTree, changes);
    ASSERT_TRUE(files);
    ASSERT_EQ(files->size(), 3);
    const qrv::Difference& gone = files->at(0);
    EXPECT_EQ(gone.path, OdString(L"gone"));
    EXPECT_EQ(gone.before->contents, L"po:" + digest("gone"));
    EXPECT_FALSE(gone.after);
    const qrv::Difference& added = files->at(1);
    EXPECT_EQ(added.path, OdString(L"new"));
    EXPECT_FALSE(added.before);
    EXPECT_FALSE(added.after->isStored());
    EXPECT_EQ(added.after->digest(), digest("new one"));
    EXPECT_EQ(added.after->sizeBytes, 7);
    const qrv::Difference& modified = files->at(2);
    EXPECT_EQ(modified.path, OdString(L"other"));
    EXPECT_EQ(modified.before->contents, L"po:" + digest("other"));
    EXPECT_EQ(modified.after->digest(), digest("changed"));
}

TEST(WorkingFiles, LackWhatWentAwaySinceTheScan) {
    const Office office;
    std::filesystem::remove(office.folder / "other");
    std::filesystem::create_directory(office.folder / "new");
    WorkingChanges changes;
    changes.files.modified.emplace_back(L"other");
    changes.files.added.emplace_back(L"new");
    const WorkingFiles files = readWorkingFiles(*office.workingTree, changes);
    ASSERT_TRUE(files);
    ASSERT_EQ(files->size(), 1);
    EXPECT_EQ(files->front().path, OdString(L"other"));
    EXPECT_FALSE(files->front().after);
}

TEST(WorkingFiles, NeedEveryChangedFile) {
    const Office office;
    std::filesystem::remove(office.folder / "other");
    std::filesystem::create_symlink("kept", office.folder / "other");
    WorkingChanges changes;
    changes.files.modified.emplace_back(L"other");
    const WorkingFiles files = readWorkingFiles(*office.workingTree, changes);
    ASSERT_FALSE(files);
    EXPECT_EQ(files.error().message,
              OdString::format(L"'other' cannot be read: %ls",
                               OdString(std::generic_category().message(ELOOP).c_str())));
}

}  // namespace
