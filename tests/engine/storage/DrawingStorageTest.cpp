#include <engine/base/Digest.h>
#include <engine/database/Database.h>
#include <engine/storage/DrawingStorage.h>
#include <engine/storage/WorkingFileReader.h>
#include <tests/engine/storage/Contents.h>
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

TEST_F(DrawingStorageTest, KeepsADrawingInTheStoreNamedAfterItsPath) {
    const OdString first = store("plan.dwg", revision(1));
    const OdString second = store("plan.dwg", revision(2));
    const OdString other = store("sub/plan.dwg", revision(3));

    EXPECT_EQ(first, url(plan_, revision(1)));
    EXPECT_EQ(second, url(plan_, revision(2)));
    const std::string otherStore = Digest::of("sub/plan.dwg").substr(0, 32);
    EXPECT_EQ(other, url(otherStore, revision(3)));
    std::vector<std::string> files = {plan_ + ".tf", otherStore + ".tf"};
    std::sort(files.begin(), files.end());
    EXPECT_EQ(listTree(folder_ / ".qrv/tf"), files);
    EXPECT_TRUE(read(first) == revision(1));
    EXPECT_TRUE(read(second) == revision(2));
    EXPECT_TRUE(read(other) == revision(3));
}

TEST_F(DrawingStorageTest, GoesOnInTheStoreOfThePreviousVersion) {
    const OdString first = store("plan.dwg", revision(1));
    previousUrl_ = first;

    const OdString second = store("renamed.dwg", revision(2));

    EXPECT_EQ(second, url(plan_, revision(2)));
    EXPECT_THAT(listTree(folder_ / ".qrv/tf"), ElementsAre(plan_ + ".tf"));
}

TEST_F(DrawingStorageTest, KeepsARevisionAgainstTheOneThatItContinues) {
    const std::string side = revision(0, 4000) + qrv_test::randomBytes(4000, 9);
    const OdString first = store("plan.dwg", side);
    store("plan.dwg", qrv_test::randomBytes(8000, 10));
    const auto before = fs::file_size(folder_ / (".qrv/tf/" + plan_ + ".tf"));
    previousUrl_ = first;

    store("plan.dwg", side + "one more");

    EXPECT_LE(fs::file_size(folder_ / (".qrv/tf/" + plan_ + ".tf")), before + 4096);
}

TEST_F(DrawingStorageTest, EqualContentsAreKeptOnceAndNothingIsWritten) {
    const OdString first = store("plan.dwg", revision(1));
    store("plan.dwg", revision(2));
    const std::string before = readFile(folder_ / (".qrv/tf/" + plan_ + ".tf"));

    EXPECT_EQ(store("plan.dwg", revision(1)), first);

    EXPECT_TRUE(readFile(folder_ / (".qrv/tf/" + plan_ + ".tf")) == before);
}

TEST_F(DrawingStorageTest, RestoresAnyRevision) {
    std::vector<OdString> urls;
    for (unsigned number = 1; number <= 20; ++number)
        urls.push_back(store("plan.dwg", revision(number)));

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

TEST_F(DrawingStorageTest, ListsTheRevisionsOldestFirst) {
    std::vector<OdString> urls;
    for (const unsigned number : {3, 1, 2})
        urls.push_back(store("plan.dwg", revision(number)));

    EXPECT_EQ(storage_.revisions(root_, urls[2]).value(), urls);
}

TEST_F(DrawingStorageTest, RemovesARevisionAndKeepsTheOthers) {
    std::vector<OdString> urls;
    for (unsigned number = 1; number <= 3; ++number)
        urls.push_back(store("plan.dwg", revision(number)));

    ASSERT_TRUE(storage_.remove(root_, urls[0]));

    EXPECT_FALSE(storage_.contains(root_, urls[0]).value());
    EXPECT_TRUE(read(urls[1]) == revision(2));
    EXPECT_TRUE(read(urls[2]) == revision(3));
    EXPECT_THAT(storage_.revisions(root_, urls[0]).value(), ElementsAre(urls[1], urls[2]));
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
    fs::create_directory_symlink("../elsewhere", folder_ / ".qrv/tf");
    EXPECT_EQ(complaintOfStoring("plan.dwg"),
              "'.qrv/tf' cannot be used: it is a symbolic link, or one leads to it");
    EXPECT_THAT(listTree(folder_ / "elsewhere"), ElementsAre());

    fs::remove(folder_ / ".qrv/tf");
    fs::create_directory(folder_ / ".qrv/tf");
    fs::create_symlink("../../elsewhere/x.tf", folder_ / (".qrv/tf/" + plan_ + ".tf"));
    EXPECT_EQ(complaintOfStoring("plan.dwg"),
              "The database '" + storeFile() + "' cannot be used: it is not a regular file");
    EXPECT_THAT(listTree(folder_ / "elsewhere"), ElementsAre());
}

TEST_F(DrawingStorageTest, DoesNotReadThroughALink) {
    const OdString first = store("plan.dwg", revision(1));
    fs::rename(folder_ / ".qrv/tf", folder_ / "elsewhere");
    fs::create_directory_symlink("../elsewhere", folder_ / ".qrv/tf");

    EXPECT_EQ(read(first), "error: '.qrv/tf/" + plan_ +
                               ".tf' cannot be used: it is a symbolic link, or one leads to it");
}

TEST_F(DrawingStorageTest, DoesNotWaitForAPipe) {
    writeFile(folder_ / "plan.dwg", "contents");
    fs::create_directory(folder_ / ".qrv/tf");
    ASSERT_EQ(mkfifo((folder_ / (".qrv/tf/" + plan_ + ".tf")).c_str(), 0600), 0);

    const std::string refusal =
        "The database '" + storeFile() + "' cannot be used: it is not a regular file";
    EXPECT_EQ(complaintOfStoring("plan.dwg"), refusal);
    EXPECT_EQ(read(url(plan_, "contents")), "error: " + refusal);
}

TEST_F(DrawingStorageTest, AFileOfANewerLayoutIsRefused) {
    const OdString first = store("plan.dwg", revision(1));
    const OdString file = folder_.text(".qrv/tf/" + plan_ + ".tf");
    qrv::Database(file, qrv::Database::Access::readWrite).setSchemaVersion(2);

    const std::string refusal =
        "'" + file.toNarrow() + "' was written by a newer version of this program";
    EXPECT_EQ(complaintOfStoring("plan.dwg"), refusal);
    EXPECT_EQ(read(first), "error: " + refusal);
    EXPECT_EQ(storage_.remove(root_, first).error().message.toNarrow(), refusal);
}

TEST_F(DrawingStorageTest, ADamagedRevisionIsNotRestored) {
    const OdString first = store("plan.dwg", revision(1));
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

TEST_F(DrawingStorageTest, WhatAKilledWriterLeftIsTakenBackByTheReader) {
    const OdString first = store("plan.dwg", revision(1));
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

TEST_F(DrawingStorageTest, TellsAndRemovesAWholeStoreByItsName) {
    const OdString store = OdString::fromNarrow(plan_);
    EXPECT_THAT(storage_.revisionsIn(root_, store).value(), testing::IsEmpty());
    EXPECT_EQ(storage_.openStore(root_, store).value(), nullptr);
    const OdString first = this->store("plan.dwg", revision(1));
    const OdString second = this->store("plan.dwg", revision(2));
    this->store("other.dwg", revision(3));

    EXPECT_THAT(storage_.revisionsIn(root_, store).value(), ElementsAre(first, second));
    EXPECT_EQ(storage_.openStore(root_, store).value()->frames().size(), 2U);
    EXPECT_TRUE(storage_.removeStore(root_, store));

    EXPECT_FALSE(fs::exists(storeFile()));
    EXPECT_EQ(read(first), "not there");
    EXPECT_EQ(listTree(folder_ / ".qrv/tf").size(), 1U);
    EXPECT_EQ(storage_.removeStore(root_, store).error().message.toNarrow(),
              "'.qrv/tf/" + plan_ + ".tf' cannot be removed: No such file or directory");
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

    const std::string complaint = complaintOfStoring("plan.dwg");
    isDone = true;
    writer.join();

    EXPECT_EQ(complaint, "'plan.dwg' cannot be stored: it changes while it is read");
    EXPECT_TRUE(storage_.store(root_, L"plan.dwg"));
}

TEST(WorkingFileReader, FailsAtTheEndWhenTheFileHasChanged) {
    const qrv_test::TemporaryFolder folder;
    const sys::Outcome<sys::Folder> root = sys::Folder::open(folder.path().string());
    const qrv::RelativePath path = qrv::RelativePath::check(L"plan.dwg").value();
    struct Case {
        const char* now;
        bool isChanged;
    };
    for (const Case& each : {Case{"0123456789", false}, Case{"0123456789more", true},
                             Case{"0123", true}, Case{"01234", true}}) {
        writeFile(folder / "plan.dwg", "0123456789");
        const std::unique_ptr<qrv::WorkingFileReader> file =
            qrv::WorkingFileReader::open(*root, path).value();
        EXPECT_EQ(file->sizeBytes(), 10);
        std::string buffer(5, '\0');
        ASSERT_EQ(file->read(buffer).value(), 5);
        if (each.isChanged)
            writeFile(folder / "plan.dwg", each.now);

        const std::string rest = readAll(*file);

        EXPECT_EQ(rest, each.isChanged
                            ? "error: 'plan.dwg' cannot be stored: it changes while it is read"
                            : "56789");
        EXPECT_EQ(file->hasChanged(), each.isChanged) << each.now;
    }
}

}  // namespace
