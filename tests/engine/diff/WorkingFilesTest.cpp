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
#include <utility>

namespace {

using qrv::readWorkingFiles;
using qrv::WorkingChanges;
using qrv::WorkingFiles;
using qrv::WorkingTree;
using qrv_test::relative;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

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

TEST(WorkingFiles, HaveWhatTheFilesHold) {
    const Office office;
    writeFile(office.folder / "other", "changed");
    writeFile(office.folder / "new", "new one");
    std::filesystem::remove(office.folder / "gone");
    WorkingChanges changes;
    changes.files.modified.emplace_back(L"other");
    changes.files.added.emplace_back(L"new");
    changes.files.removed.emplace_back(L"gone");
    const Expected<WorkingFiles> files = readWorkingFiles(*office.workingTree, changes);
    ASSERT_TRUE(files);
    ASSERT_EQ(files->size(), 3);
    EXPECT_EQ(files->at(L"kept").contents, L"po:" + digest("kept"));
    for (const auto& [path, contents] : {std::pair(L"other", "changed"), {L"new", "new one"}}) {
        EXPECT_FALSE(files->at(path).isStored());
        EXPECT_EQ(files->at(path).digest(), digest(contents));
        EXPECT_EQ(files->at(path).sizeBytes, 7);
    }
}

TEST(WorkingFiles, LackWhatWentAwaySinceTheScan) {
    const Office office;
    std::filesystem::remove(office.folder / "other");
    std::filesystem::create_directory(office.folder / "new");
    WorkingChanges changes;
    changes.files.modified.emplace_back(L"other");
    changes.files.added.emplace_back(L"new");
    const Expected<WorkingFiles> files = readWorkingFiles(*office.workingTree, changes);
    ASSERT_TRUE(files);
    EXPECT_EQ(files->size(), 2);
    EXPECT_FALSE(files->contains(L"other"));
}

TEST(WorkingFiles, NeedEveryChangedFile) {
    const Office office;
    std::filesystem::remove(office.folder / "other");
    std::filesystem::create_symlink("kept", office.folder / "other");
    WorkingChanges changes;
    changes.files.modified.emplace_back(L"other");
    const Expected<WorkingFiles> files = readWorkingFiles(*office.workingTree, changes);
    ASSERT_FALSE(files);
    EXPECT_EQ(files.error().message,
              OdString::format(L"'other' cannot be read: %ls",
                               OdString(std::generic_category().message(ELOOP).c_str())));
}

}  // namespace
