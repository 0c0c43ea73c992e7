#include <common/state/Cache.h>
#include <common/state/Index.h>
#include <common/storage/FileStorage.h>
#include <tests/support/Files.h>
#include <tests/support/RecordingIo.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/support/VirtualTable.h>

#include <gmock/gmock.h>

#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using common::Cache;
using common::ConflictData;
using common::DiffHandles;
using common::FileChange;
using common::FileStorage;
using common::IoInterfaceRef;
using common::RootPath;
using common::VersionedFile;
using common::Versions;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Calls = std::vector<std::pair<OdString, OdString>>;

/// A storage that is only asked to restore, and answers what it is told to.
class StubStorage final : public FileStorage {
public:
    Expected<OdString> store(const RootPath&, const OdString&) override { return unexpected(); }
    Expected<bool> contains(const RootPath&, const OdString&) override { return unexpected(); }
    Expected<void> exportTo(const RootPath&, const OdString&, const OdString&) override {
        return unexpected();
    }
    Expected<DiffHandles> compare(const RootPath&, const OdString&, const OdString&) override {
        return unexpected();
    }
    Expected<bool> restore(const RootPath& root, const OdString& url,
                           const OdString& path) override {
        restored.emplace_back(url, path);
        restoredRoot = root.path();
        return restoreAnswer;
    }
    Expected<void> remove(const RootPath&, const OdString&) override { return unexpected(); }
    Expected<void> verify(const RootPath&, const OdString&) override { return unexpected(); }
    Expected<std::vector<OdString>> revisions(const RootPath&, const OdString&) override {
        return unexpected();
    }

    Expected<bool> restoreAnswer = true;
    Calls restored;
    OdString restoredRoot;

private:
    static ErrorMessage unexpected() {
        ADD_FAILURE() << "an operation was called that should not be";
        return {};
    }
};

/// A host that accepts no path, or every one, and notes what it was asked.
class AskedIo final : public qrv_test::RecordingIo {
public:
    explicit AskedIo(bool answer) : answer_(answer) {}
    bool acceptsPath(const OdString& path) const override {
        asked.push_back(path);
        return answer_;
    }

    mutable std::vector<OdString> asked;

private:
    bool answer_;
};

class FileStorageTest : public testing::Test {
protected:
    FileStorageTest() { Cache::create(root, io); }

    std::shared_ptr<Cache> cache() const { return Cache::get(root, io).value(); }

    Expected<bool> update(Cache& cache, FileChange change) {
        IoInterfaceRef ioRef(io);
        const Versions<VersionedFile, VersionedFile> versions{{L"current", L"po:c"},
                                                              {L"a/remote.txt", L"po:r"}};
        return storage.inFileUpdate(root, ioRef, cache, versions, change);
    }

    qrv_test::TemporaryFolder folder;
    RootPath root = RootPath::get(folder.text(), true).value();
    qrv_test::RecordingIo io;
    StubStorage storage;
};

TEST_F(FileStorageTest, MergesNothingWhenTheHostDoesNotAcceptTheFile) {
    const AskedIo refusing(false);
    storage.restoreAnswer = ErrorMessage{L"not to be seen", 0};
    EXPECT_TRUE(storage.merge(L"file", L"path", L"other", L"url", root, refusing).hasValue());
    EXPECT_THAT(refusing.asked, ElementsAre(OdString(L"file")));
    EXPECT_THAT(storage.restored, IsEmpty());
}

TEST_F(FileStorageTest, MergesByRestoringTheVersion) {
    const AskedIo accepting(true);
    EXPECT_TRUE(storage.merge(L"file", L"path", L"other", L"url", root, accepting).hasValue());
    EXPECT_THAT(accepting.asked, ElementsAre(OdString(L"file")));
    EXPECT_THAT(storage.restored, ElementsAre(Pair(OdString(L"url"), OdString(L"path"))));
    EXPECT_EQ(storage.restoredRoot, root.path());
    EXPECT_THAT(accepting.results, IsEmpty());
}

TEST_F(FileStorageTest, FailsToMergeWhatIsNotInTheStorage) {
    storage.restoreAnswer = false;
    const Expected<void> merged =
        storage.merge(L"file", L"a/path %ls", L"other", L"url", root, AskedIo(true));
    ASSERT_FALSE(merged.hasValue());
    EXPECT_EQ(merged.error().message, L"Could not find a/path %ls in the storage");
    EXPECT_EQ(merged.error().code, 0);
}

TEST_F(FileStorageTest, PassesOnTheErrorOfRestoring) {
    storage.restoreAnswer = ErrorMessage{L"disk is full", 7};
    const Expected<void> merged =
        storage.merge(L"file", L"path", L"other", L"url", root, AskedIo(true));
    ASSERT_FALSE(merged.hasValue());
    EXPECT_EQ(merged.error().message, L"disk is full");
    EXPECT_EQ(merged.error().code, 7);

    const Expected<bool> updated = update(*cache(), FileChange::unchanged);
    ASSERT_FALSE(updated.hasValue());
    EXPECT_EQ(updated.error().message, L"disk is full");
    EXPECT_EQ(updated.error().code, 7);
}

TEST_F(FileStorageTest, UpdatesAnUnchangedFileAndItsIndexEntry) {
    qrv_test::writeFile(folder / "a/remote.txt", "new");
    const auto shared = cache();
    const Expected<bool> updated = update(*shared, FileChange::unchanged);
    ASSERT_TRUE(updated.hasValue());
    EXPECT_TRUE(*updated);
    EXPECT_THAT(storage.restored, ElementsAre(Pair(OdString(L"po:r"), OdString(L"a/remote.txt"))));
    EXPECT_EQ(storage.restoredRoot, root.path());
    ASSERT_EQ(shared->read().index.size(), 1U);
    const auto& [path, entry] = *shared->read().index.begin();
    EXPECT_EQ(path, L"a/remote.txt");
    EXPECT_EQ(entry.lastChecked, common::modifyTime(L"a/remote.txt", root));
    EXPECT_NE(entry.lastChecked, 0);
    EXPECT_FALSE(entry.modified);
    EXPECT_THAT(shared->read().conflicts, IsEmpty());
}

// The answer of restore is not looked at: a version that is missing counts as brought in.
TEST_F(FileStorageTest, UpdatesTheIndexAlsoWhenTheVersionWasNotFound) {
    storage.restoreAnswer = false;
    const auto shared = cache();
    const Expected<bool> updated = update(*shared, FileChange::unchanged);
    ASSERT_TRUE(updated.hasValue());
    EXPECT_TRUE(*updated);
    EXPECT_EQ(shared->read().index.size(), 1U);
}

TEST_F(FileStorageTest, LeavesTheCacheAsItIsWhenRestoringFails) {
    storage.restoreAnswer = ErrorMessage{L"disk is full", 0};
    const std::string before = qrv_test::readFile(folder / ".qrv/qrv.state");
    io.results.clear();
    {
        const auto shared = cache();
        EXPECT_FALSE(update(*shared, FileChange::unchanged).hasValue());
        EXPECT_THAT(shared->read().index, IsEmpty());
    }
    EXPECT_THAT(io.results, IsEmpty());
    EXPECT_EQ(qrv_test::readFile(folder / ".qrv/qrv.state"), before);
}

TEST_F(FileStorageTest, RecordsAConflictForAChangedFile) {
    storage.restoreAnswer = ErrorMessage{L"not to be seen", 0};
    const FileChange changes[] = {FileChange::added, FileChange::modified, FileChange::removed,
                                  static_cast<FileChange>(9)};
    for (const FileChange change : changes) {
        const auto shared = cache();
        const Expected<bool> updated = update(*shared, change);
        ASSERT_TRUE(updated.hasValue());
        EXPECT_FALSE(*updated);
        EXPECT_THAT(shared->read().conflicts,
                    ElementsAre(ConflictData(L"a/remote.txt", L"po:r", FileChange::modified, change,
                                             DiffHandles())));
        EXPECT_THAT(shared->read().index, IsEmpty());
    }
    EXPECT_THAT(storage.restored, IsEmpty());
}

TEST_F(FileStorageTest, ReplacesTheConflictOfTheSameFile) {
    const auto shared = cache();
    EXPECT_TRUE(update(*shared, FileChange::added).hasValue());
    EXPECT_TRUE(update(*shared, FileChange::removed).hasValue());
    EXPECT_THAT(shared->read().conflicts,
                ElementsAre(ConflictData(L"a/remote.txt", L"po:r", FileChange::modified,
                                         FileChange::removed)));
}

TEST_F(FileStorageTest, KnowsOfNoLocalChanges) {
    IoInterfaceRef ioRef(io);
    for (const bool flag : {false, true}) {
        const auto changes = storage.getLocalChanges(root, L"a.dwg", L"b.dwg", ioRef, flag);
        ASSERT_TRUE(changes.hasValue());
        EXPECT_EQ(*changes, DiffHandles());
    }
    EXPECT_THAT(storage.restored, IsEmpty());
}

template <class Operation>
std::ptrdiff_t slot(Operation operation) {
    return qrv_test::slotOf(operation, &FileStorage::store);
}

TEST(FileStorage, KeepsTheOrderOfItsOperations) {
    EXPECT_EQ(slot(&FileStorage::store), 0);
    EXPECT_EQ(slot(&FileStorage::contains), 1);
    EXPECT_EQ(slot(&FileStorage::exportTo), 2);
    EXPECT_EQ(slot(&FileStorage::merge), 3);
    EXPECT_EQ(slot(&FileStorage::compare), 4);
    EXPECT_EQ(slot(&FileStorage::inFileUpdate), 5);
    EXPECT_EQ(slot(&FileStorage::restore), 6);
    EXPECT_EQ(slot(&FileStorage::remove), 7);
    EXPECT_EQ(slot(&FileStorage::verify), 8);
    EXPECT_EQ(slot(&FileStorage::revisions), 9);
    EXPECT_EQ(slot(&FileStorage::getLocalChanges), 10);
}

TEST(FileStorage, HoldsNothing) {
    EXPECT_EQ(sizeof(FileStorage), sizeof(void*));
    EXPECT_TRUE(std::is_abstract_v<FileStorage>);
    EXPECT_TRUE(std::has_virtual_destructor_v<FileStorage>);
}

}  // namespace
