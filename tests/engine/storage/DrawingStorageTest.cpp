#include <engine/base/Digest.h>
#include <engine/database/Database.h>
#include <engine/storage/DrawingStorage.h>
#include <tests/engine/storage/FrameStoreFile.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::Digest;
using qrv::DrawingStorage;
using qrv_test::listTree;
using qrv_test::readAll;
using qrv_test::readFile;
using qrv_test::revision;
using qrv_test::writeFile;
using testing::ElementsAre;
using testing::HasSubstr;

class DrawingStorageTest : public testing::Test {
protected:
    OdString store(const std::string& path, const std::string& contents) {
        writeFile(folder_ / path, contents);
        return storage_.store(root_, OdString::fromNarrow(path)).value();
    }
    std::string complaintOfStoring(const std::string& path) {
        const Expected<OdString> url = storage_.store(root_, OdString::fromNarrow(path));
        return url ? "none" : url.error().message.toNarrow();
    }
    std::string read(const OdString& url) {
        const Expected<std::unique_ptr<qrv::VersionReader>> reader = storage_.open(root_, url);
        if (!reader)
            return "error: " + reader.error().message.toNarrow();
        return *reader ? readAll(**reader) : "not there";
    }
    std::uintmax_t sizeOfPacks() const {
        std::uintmax_t size = 0;
        for (const auto& file : fs::directory_iterator(folder_ / ".qrv/packs"))
            size += file.file_size();
        return size;
    }
    std::string storeFile() const { return (folder_ / (".qrv/tf/" + plan_ + ".tf")).string(); }
    static OdString url(const std::string& store, const std::string& contents) {
        return OdString::fromNarrow("tf:" + store + "#" + Digest::of(contents));
    }

    const qrv_test::TemporaryFolder folder_;
    const common::RootPath root_ = common::RootPath::get(folder_.text(), true).value();
    OdString previousUrl_;
    DrawingStorage storage_{[this](const OdString&) { return previousUrl_; }};
    const std::string plan_ = Digest::of("plan.dwg").substr(0, 32);
};

TEST_F(DrawingStorageTest, NamesTheStoreOfADrawingAfterItsPath) {
    const OdString first = store("plan.dwg", revision(1));
    const OdString second = store("plan.dwg", revision(2));
    const OdString other = store("sub/plan.dwg", revision(3));

    EXPECT_EQ(first, url(plan_, revision(1)));
    EXPECT_EQ(second, url(plan_, revision(2)));
    EXPECT_EQ(other, url(Digest::of("sub/plan.dwg").substr(0, 32), revision(3)));
    EXPECT_FALSE(fs::exists(folder_ / ".qrv/tf"));
    EXPECT_TRUE(read(first) == revision(1));
    EXPECT_TRUE(read(second) == revision(2));
    EXPECT_TRUE(read(other) == revision(3));
    storage_.flush(root_).value();
    EXPECT_TRUE(read(first) == revision(1));
    EXPECT_EQ(listTree(folder_ / ".qrv/packs").size(), 1U);
}

TEST_F(DrawingStorageTest, GoesOnInTheStoreOfThePreviousVersion) {
    const OdString first = store("plan.dwg", revision(1));
    previousUrl_ = first;

    const OdString second = store("renamed.dwg", revision(2));

    EXPECT_EQ(second, url(plan_, revision(2)));
    EXPECT_TRUE(read(second) == revision(2));
}

TEST_F(DrawingStorageTest, KeepsARevisionAgainstTheOneThatItContinues) {
    const std::string side = revision(0, 4000) + qrv_test::randomBytes(4000, 9);
    previousUrl_ = store("plan.dwg", side);
    storage_.flush(root_).value();
    const std::uintmax_t before = sizeOfPacks();

    const OdString next = store("plan.dwg", side + "one more");
    storage_.flush(root_).value();

    EXPECT_LE(sizeOfPacks(), before + 500);
    EXPECT_TRUE(read(next) == side + "one more");
}

TEST_F(DrawingStorageTest, KeepsACopyOfATemplateAgainstThatWhateverItsName) {
    const std::string sheet = qrv_test::randomBytes(20000, 5);
    store("template.dwg", sheet);
    const OdString inTheSameCommand = store("sheets/1.dwg", "1" + sheet + "one");
    storage_.flush(root_).value();
    const std::uintmax_t both = sizeOfPacks();
    EXPECT_LE(both, 21500U);

    DrawingStorage later{[](const OdString&) { return OdString(); }};
    writeFile(folder_ / "sheets/2.dwg", "2" + sheet + "two");
    const OdString inAnother = later.store(root_, L"sheets/2.dwg").value();
    later.flush(root_).value();

    EXPECT_LE(sizeOfPacks(), both + 1500);
    EXPECT_TRUE(read(inTheSameCommand) == "1" + sheet + "one");
    EXPECT_TRUE(read(inAnother) == "2" + sheet + "two");
}

TEST_F(DrawingStorageTest, EqualContentsAreKeptOnceAndNothingIsWritten) {
    const OdString first = store("plan.dwg", revision(1));
    storage_.flush(root_).value();
    const std::vector<std::string> before = listTree(folder_ / ".qrv/packs");

    EXPECT_EQ(store("plan.dwg", revision(1)), first);
    const OdString copy = store("copy.dwg", revision(1));
    storage_.flush(root_).value();

    EXPECT_EQ(listTree(folder_ / ".qrv/packs"), before);
    EXPECT_TRUE(read(copy) == revision(1));
}

TEST_F(DrawingStorageTest, RestoresAnyRevision) {
    std::vector<OdString> urls;
    for (unsigned number = 1; number <= 20; ++number) {
        urls.push_back(store("plan.dwg", revision(number)));
        previousUrl_ = urls.back();
    }
    storage_.flush(root_).value();

    for (unsigned number = 1; number <= 20; ++number) {
        EXPECT_TRUE(storage_.restore(root_, urls[number - 1], L"plan.dwg").value());
        EXPECT_TRUE(readFile(folder_ / "plan.dwg") == revision(number)) << number;
    }
}

TEST_F(DrawingStorageTest, AnUnknownVersionIsNotThere) {
    const OdString unknown = url(plan_, "unknown");
    EXPECT_FALSE(storage_.contains(root_, unknown).value());
    EXPECT_EQ(read(unknown), "not there");
    EXPECT_FALSE(storage_.restore(root_, unknown, L"plan.dwg").value());
    EXPECT_THAT(storage_.revisions(root_, unknown).value(), ElementsAre());
    EXPECT_TRUE(storage_.remove(root_, unknown));
    EXPECT_FALSE(fs::exists(folder_ / ".qrv/tf"));

    store("plan.dwg", revision(1));
    EXPECT_FALSE(storage_.contains(root_, unknown).value());
    EXPECT_EQ(read(unknown), "not there");
    EXPECT_TRUE(storage_.remove(root_, unknown));
    const OdString object = OdString::fromNarrow("po:" + Digest::of("unknown"));
    EXPECT_FALSE(storage_.contains(root_, object).value());
}

TEST_F(DrawingStorageTest, ListsTheRevisionsOfAnOldStoreOldestFirst) {
    qrv_test::oldStoreOf(folder_.text(), plan_, {revision(3), revision(1)});
    const std::vector<OdString> old = {url(plan_, revision(3)), url(plan_, revision(1))};
    const OdString next = store("plan.dwg", revision(2));

    EXPECT_EQ(storage_.revisions(root_, old[1]).value(), old);
    EXPECT_THAT(storage_.revisions(root_, next).value(), ElementsAre(old[0], old[1], next));
}

TEST_F(DrawingStorageTest, RemovesARevisionAndKeepsTheOthers) {
    std::vector<OdString> urls;
    for (unsigned number = 1; number <= 3; ++number) {
        urls.push_back(store("plan.dwg", revision(number)));
        previousUrl_ = urls.back();
        storage_.flush(root_).value();
    }

    ASSERT_TRUE(storage_.remove(root_, urls[0]));

    EXPECT_FALSE(storage_.contains(root_, urls[0]).value());
    EXPECT_TRUE(read(urls[1]) == revision(2));
    EXPECT_TRUE(read(urls[2]) == revision(3));
}

TEST_F(DrawingStorageTest, RefusesUnsafeNames) {
    EXPECT_THAT(complaintOfStoring("../plan.dwg"), HasSubstr("../plan.dwg"));
    const OdString outside = OdString::fromNarrow("tf:../../plan#" + Digest::of(""));
    EXPECT_FALSE(storage_.contains(root_, outside));
    EXPECT_FALSE(storage_.open(root_, outside));
    EXPECT_FALSE(storage_.remove(root_, outside));
    EXPECT_FALSE(storage_.revisions(root_, outside));
    previousUrl_ = outside;
    writeFile(folder_ / "plan.dwg", "");
    EXPECT_THAT(complaintOfStoring("plan.dwg"), HasSubstr("tf:../../plan#"));
}

TEST_F(DrawingStorageTest, AMissingFileIsAnErrorAndMakesNoStore) {
    EXPECT_EQ(complaintOfStoring("plan.dwg"),
              "'plan.dwg' cannot be stored: No such file or directory");
    EXPECT_FALSE(fs::exists(folder_ / ".qrv/tf"));
}

TEST_F(DrawingStorageTest, DoesNotLeaveTheRepositoryThroughALink) {
    writeFile(folder_ / "plan.dwg", "contents");
    fs::create_directory(folder_ / "elsewhere");
    fs::create_directory_symlink("../elsewhere", folder_ / ".qrv/packs");

    EXPECT_EQ(complaintOfStoring("plan.dwg"), "none");
    EXPECT_EQ(storage_.flush(root_).error().message.toNarrow(),
              "'.qrv/packs' cannot be written: it is a symbolic link, or one leads to it");
    EXPECT_THAT(listTree(folder_ / "elsewhere"), ElementsAre());
}

TEST_F(DrawingStorageTest, DoesNotReadAnOldStoreThroughALink) {
    qrv_test::oldStoreOf(folder_.text(), plan_, {revision(1)});
    fs::rename(folder_ / ".qrv/tf", folder_ / "elsewhere");
    fs::create_directory_symlink("../elsewhere", folder_ / ".qrv/tf");

    EXPECT_EQ(read(url(plan_, revision(1))),
              "error: '.qrv/tf/" + plan_ +
                  ".tf' cannot be used: it is a symbolic link, or one leads to it");
}

TEST_F(DrawingStorageTest, DoesNotWaitForAPipe) {
    fs::create_directory(folder_ / ".qrv/tf");
    ASSERT_EQ(mkfifo((folder_ / (".qrv/tf/" + plan_ + ".tf")).c_str(), 0600), 0);

    EXPECT_EQ(read(url(plan_, "contents")),
              "error: The database '" + storeFile() + "' cannot be used: it is not a regular file");
}

TEST_F(DrawingStorageTest, AnOldStoreOfANewerLayoutIsRefused) {
    qrv_test::oldStoreOf(folder_.text(), plan_, {revision(1)});
    const OdString first = url(plan_, revision(1));
    const OdString file = folder_.text(".qrv/tf/" + plan_ + ".tf");
    qrv::Database(file, qrv::Database::Access::readWrite).setSchemaVersion(2);

    const std::string refusal =
        "'" + file.toNarrow() + "' was written by a newer version of this program";
    EXPECT_EQ(read(first), "error: " + refusal);
    EXPECT_EQ(storage_.remove(root_, first).error().message.toNarrow(), refusal);
}

TEST_F(DrawingStorageTest, ADamagedRevisionOfAnOldStoreIsNotRestored) {
    qrv_test::oldStoreOf(folder_.text(), plan_, {revision(1)});
    const OdString first = url(plan_, revision(1));
    EXPECT_TRUE(storage_.verify(root_, first));
    qrv::Database(folder_.text(".qrv/tf/" + plan_ + ".tf"), qrv::Database::Access::readWrite)
        .execute(
            "UPDATE pieces SET bytes = CAST(substr(bytes, 1, 1000) || x'4142' ||"
            " substr(bytes, 1003) AS BLOB)");
    writeFile(folder_ / "plan.dwg", "mine");

    const std::string complaint = "The version " + Digest::of(revision(1)) + " in '" +
                                  (folder_ / (".qrv/tf/" + plan_ + ".tf")).string() +
                                  "' is damaged: its contents are not those that were stored";
    EXPECT_EQ(storage_.verify(root_, first).error().message.toNarrow(), complaint);
    EXPECT_EQ(storage_.restore(root_, first, L"plan.dwg").error().message.toNarrow(), complaint);
    EXPECT_THAT(listTree(folder_.path()),
                ElementsAre(".qrv/", ".qrv/tf/", ".qrv/tf/" + plan_ + ".tf", "plan.dwg"));
    EXPECT_EQ(readFile(folder_ / "plan.dwg"), "mine");
}

TEST_F(DrawingStorageTest, WhatAKilledWriterLeftInAnOldStoreIsTakenBackByTheReader) {
    qrv_test::oldStoreOf(folder_.text(), plan_, {revision(1)});
    const OdString first = url(plan_, revision(1));
    const std::string file = ".qrv/tf/" + plan_ + ".tf";
    {
        qrv::Database database(folder_.text(file), qrv::Database::Access::readWrite);
        database.execute(
            "PRAGMA cache_size = 1; BEGIN; UPDATE frames SET size = 1;"
            "UPDATE pieces SET bytes = zeroblob(400000)");
        fs::copy_file(folder_ / file, folder_ / "half");
        fs::copy_file(folder_ / (file + "-journal"), folder_ / "half-journal");
    }
    ASSERT_FALSE(readFile(folder_ / "half") == readFile(folder_ / file));
    fs::rename(folder_ / "half", folder_ / file);
    fs::rename(folder_ / "half-journal", folder_ / (file + "-journal"));

    EXPECT_TRUE(read(first) == revision(1));
    EXPECT_FALSE(fs::exists(folder_ / (file + "-journal")));
}

TEST_F(DrawingStorageTest, TellsAndRemovesAWholeOldStoreByItsName) {
    const OdString store = OdString::fromNarrow(plan_);
    EXPECT_THAT(storage_.revisionsIn(root_, store).value(), testing::IsEmpty());
    EXPECT_EQ(storage_.openStore(root_, store).value(), nullptr);
    qrv_test::oldStoreOf(folder_.text(), plan_, {revision(1), revision(2)});
    qrv_test::oldStoreOf(folder_.text(), "other", {revision(3)});
    const OdString first = url(plan_, revision(1));

    EXPECT_THAT(storage_.revisionsIn(root_, store).value(),
                ElementsAre(first, url(plan_, revision(2))));
    EXPECT_EQ(storage_.openStore(root_, store).value()->frames().size(), 2U);
    EXPECT_TRUE(storage_.removeStore(root_, store));

    EXPECT_FALSE(fs::exists(storeFile()));
    EXPECT_EQ(read(first), "not there");
    EXPECT_EQ(listTree(folder_ / ".qrv/tf").size(), 1U);
    EXPECT_EQ(storage_.removeStore(root_, store).error().message.toNarrow(),
              "'.qrv/tf/" + plan_ + ".tf' cannot be removed: No such file or directory");
}

TEST_F(DrawingStorageTest, GoesOnWhereAnOldStoreEnds) {
    qrv_test::oldStoreOf(folder_.text(), plan_, {revision(1), revision(2)});
    previousUrl_ = url(plan_, revision(2));

    EXPECT_EQ(store("plan.dwg", revision(2)), previousUrl_);
    EXPECT_TRUE(storage_.flush(root_));
    EXPECT_FALSE(fs::exists(folder_ / ".qrv/packs"));
    const OdString next = store("plan.dwg", revision(3));
    EXPECT_TRUE(storage_.flush(root_));

    EXPECT_EQ(next, url(plan_, revision(3)));
    EXPECT_TRUE(read(next) == revision(3));
    EXPECT_TRUE(read(url(plan_, revision(1))) == revision(1));
    EXPECT_TRUE(storage_.renew(root_, url(plan_, revision(1))).value());
}

TEST_F(DrawingStorageTest, AFileThatAlwaysChangesIsNotStored) {
    const std::string contents = qrv_test::randomBytes(4000000, 1);
    writeFile(folder_ / "plan.dwg", contents);
    std::atomic<bool> isDone = false;
    std::thread writer([&] {
        std::ofstream file(folder_ / "plan.dwg", std::ios::app);
        while (!isDone)
            file << "more" << std::flush;
    });

    // On a busy machine the writer may have to wait for as long as a whole read takes.
    std::string complaint = "none";
    for (int round = 0; round < 100 && complaint == "none"; ++round)
        complaint = complaintOfStoring("plan.dwg");
    isDone = true;
    writer.join();

    EXPECT_EQ(complaint, "'plan.dwg' cannot be stored: it changes while it is read");
    EXPECT_TRUE(storage_.store(root_, L"plan.dwg"));
}

}  // namespace
