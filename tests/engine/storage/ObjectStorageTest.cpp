#include <engine/storage/PackFile.h>
#include <tests/engine/storage/StorageFolder.h>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::listTree;
using qrv_test::readFile;
using qrv_test::readVersion;
using qrv_test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::UnorderedElementsAre;

class ObjectStorage : public qrv_test::StorageFolder {
protected:
    OdString errorOfStoring(const OdString& path) {
        return storage.store(root, path).error().message;
    }
    void append(const std::string& path) const {
        std::ofstream(folder / path, std::ios::binary | std::ios::app) << "more";
    }
    /// Moves an object into the pack.
    void pack(const OdString& url) {
        qrv::PackFile pack = qrv::PackFile::openForChange(root);
        const auto version = storage.open(root, url).value();
        qrv::DatabaseTransaction transaction(pack.database());
        pack.add(url.right(64).toNarrow(), *version, std::nullopt).value();
        transaction.commit();
        fs::remove(objectOf(url));
    }
};

TEST_F(ObjectStorage, KeepsAFileInAPackUnderItsDigest) {
    const OdString url = stored("plans/a.txt", "contents\n");
    EXPECT_EQ(url,
              OdString(L"po:bfe5ed57e6e323555b379c660aa8d35b70c2f8f07cf03ad6747266495ac13be0"));
    EXPECT_THAT(packs(), ElementsAre(MatchesRegex("[0-9a-f]+\\.pack")));
    EXPECT_THAT(objects(), IsEmpty());
    EXPECT_EQ(readVersion(storage, root, url), "contents\n");
}

TEST_F(ObjectStorage, KeepsAnEmptyFile) {
    const OdString url = stored("empty", "");
    EXPECT_EQ(url,
              OdString(L"po:e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"));
    EXPECT_EQ(readVersion(storage, root, url), "");
}

TEST_F(ObjectStorage, KeepsFilesOfTheSizesAroundItsLimits) {
    for (const std::size_t size : {65536UL, 65537UL, 262144UL, 262145UL, 1000000UL, 16777217UL}) {
        std::string contents(size, 'x');
        contents.back() = 'y';
        const OdString url = stored("file", contents);
        EXPECT_EQ(url, urlOf(contents)) << size;
        EXPECT_TRUE(readVersion(storage, root, url) == contents) << size;
    }
    EXPECT_THAT(packs(), SizeIs(6));
}

TEST_F(ObjectStorage, KeepsEqualContentsOnce) {
    for (const std::string& contents : {std::string("small"), std::string(1000000, 'x')}) {
        const OdString first = stored("a", contents);
        writeFile(folder / "b", contents);
        EXPECT_EQ(storage.store(root, L"a").value(), first);
        EXPECT_EQ(storage.store(root, L"b").value(), first);
        EXPECT_TRUE(storage.flush(root));
    }
    EXPECT_THAT(packs(), SizeIs(2));
}

TEST_F(ObjectStorage, KeepsFilesWhoseNamesAreNotUtf8) {
    const std::string name = "n\xFF\xC3me";
    EXPECT_EQ(stored(name, "contents"), urlOf("contents"));
}

TEST_F(ObjectStorage, IsNeverAHardLinkOfTheWorkingFile) {
    const OdString url = stored("file", "contents");
    EXPECT_EQ(fs::hard_link_count(folder / "file"), 1U);
    EXPECT_TRUE(storage.restore(root, url, L"file"));
    EXPECT_EQ(fs::hard_link_count(folder / "file"), 1U);
}

TEST_F(ObjectStorage, FindsAnObjectBeforeItHasItsName) {
    writeFile(folder / "file", "contents");
    const OdString url = storage.store(root, L"file").value();
    EXPECT_TRUE(storage.contains(root, url).value());
    EXPECT_EQ(readVersion(storage, root, url), "contents");
    EXPECT_EQ(storage.store(root, L"file").value(), url);
    EXPECT_THAT(packs(), ElementsAre(MatchesRegex(R"(\.[0-9]+-[0-9]+\.qrv-tmp)")));
    EXPECT_TRUE(storage.flush(root));
    EXPECT_THAT(packs(), ElementsAre(MatchesRegex("[0-9a-f]+\\.pack")));
}

TEST_F(ObjectStorage, DropsWhatWasNotFlushed) {
    {
        qrv::ObjectStorage other;
        writeFile(folder / "file", "contents");
        EXPECT_TRUE(other.store(root, L"file"));
    }
    EXPECT_THAT(objects(), IsEmpty());
    EXPECT_FALSE(storage.contains(root, urlOf("contents")).value());
}

TEST_F(ObjectStorage, FlushesManyFilesAtOnce) {
    for (int index = 0; index < 300; ++index) {
        const std::string name = "file" + std::to_string(index);
        writeFile(folder / name, name);
        ASSERT_TRUE(storage.store(root, OdString::fromNarrow(name)));
    }
    EXPECT_TRUE(storage.flush(root));
    EXPECT_THAT(packs(), SizeIs(1));
    EXPECT_EQ(readVersion(storage, root, urlOf("file299")), "file299");
}

TEST_F(ObjectStorage, IsContentWhenAnotherProcessStoredTheSame) {
    writeFile(folder / "file", "contents");
    qrv::ObjectStorage other;
    const OdString url = other.store(root, L"file").value();
    EXPECT_EQ(storage.store(root, L"file").value(), url);
    EXPECT_TRUE(storage.flush(root));
    EXPECT_TRUE(other.flush(root));
    EXPECT_THAT(packs(), SizeIs(1));
    EXPECT_EQ(readVersion(other, root, url), "contents");
}

TEST_F(ObjectStorage, SaysWhyAFileCannotBeStored) {
    fs::create_directory(folder / "folder");
    fs::create_symlink("file", folder / "link");
    fs::create_directory_symlink("folder", folder / "way");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(errorOfStoring(L"none"),
              OdString(L"'none' cannot be stored: No such file or directory"));
    EXPECT_EQ(errorOfStoring(L"folder"), OdString(L"'folder' cannot be stored: Is a directory"));
    EXPECT_EQ(errorOfStoring(L"pipe"),
              OdString(L"'pipe' cannot be stored: it is not a regular file"));
    EXPECT_EQ(errorOfStoring(L"link"),
              OdString(L"'link' cannot be stored: it is a symbolic link, or one leads to it"));
    EXPECT_EQ(errorOfStoring(L"way/file"),
              OdString(L"'way/file' cannot be stored: it is a symbolic link, or one leads to it"));
    EXPECT_EQ(errorOfStoring(L"../file"),
              OdString(L"'../file' cannot be used as a path: it has a component of dots or blanks "
                       L"only"));
    EXPECT_THAT(objects(), IsEmpty());
}

TEST_F(ObjectStorage, RefusesAFileThatKeepsChanging) {
    writeFile(folder / "log", std::string(20000000, 'x'));
    std::atomic<bool> hasEnded = false;
    std::thread writer([&] {
        while (!hasEnded)
            append("log");
    });
    // On a busy machine the writer may have to wait for as long as a whole read takes.
    OdString message;
    for (int round = 0; round < 100 && message.isEmpty(); ++round) {
        qrv::ObjectStorage another;
        const Expected<OdString> url = another.store(root, L"log");
        if (!url)
            message = url.error().message;
    }
    hasEnded = true;
    writer.join();
    EXPECT_EQ(message, OdString(L"'log' cannot be stored: it changes while it is read"));
    EXPECT_THAT(packs(), IsEmpty());
}

// The writer may come too late when the machine is busy; then the file is tried once more.
TEST_F(ObjectStorage, ReadsAFileThatChangedOnceAgain) {
    bool wasReadAgain = false;
    for (int round = 0; round < 40 && !wasReadAgain; ++round) {
        const std::string before(100000000, static_cast<char>('a' + round));
        writeFile(folder / "file", before);
        fs::remove_all(folder / ".qrv/packs");
        qrv::ObjectStorage another;
        std::thread writer([&] {
            while (!fs::exists(folder / ".qrv/packs") || packs().empty())
                std::this_thread::yield();
            append("file");
        });
        const Expected<OdString> url = another.store(root, L"file");
        writer.join();
        ASSERT_TRUE(url) << url.error().message.toNarrow();
        wasReadAgain = *url == urlOf(before + "more");
        EXPECT_TRUE(wasReadAgain || *url == urlOf(before));
        ASSERT_TRUE(another.flush(root));
        EXPECT_THAT(packs(), SizeIs(1));
    }
    EXPECT_TRUE(wasReadAgain);
}

TEST_F(ObjectStorage, StoresAnObjectThatWasCutOffAnew) {
    const OdString url = storedPlain("contents");
    fs::permissions(objectOf(url), fs::perms(0644));
    fs::resize_file(objectOf(url), 3);
    EXPECT_EQ(stored("file", "contents"), url);
    EXPECT_EQ(readVersion(storage, root, url), "contents");
}

TEST_F(ObjectStorage, TakesNothingButARegularFileForAnObject) {
    const std::string link = "of a link";
    const std::string pipe = "of a pipe";
    fs::create_directories(folder / ".qrv/objects");
    fs::create_symlink("/etc/passwd", objectOf(urlOf(link)));
    ASSERT_EQ(::mkfifo(objectOf(urlOf(pipe)).c_str(), 0600), 0);
    const std::vector<std::pair<std::string, OdString>> impostors = {
        {link, L"it is a symbolic link, or one leads to it"},
        {pipe, L"it is not a regular file"},
    };
    for (const auto& [contents, cause] : impostors) {
        const OdString url = urlOf(contents);
        EXPECT_FALSE(storage.contains(root, url).value());
        EXPECT_EQ(storage.verify(root, url).error().message,
                  L"The stored version '" + url + L"' cannot be read: " + cause);
        EXPECT_FALSE(storage.restore(root, url, L"restored"));
        EXPECT_FALSE(fs::exists(folder / "restored"));
        EXPECT_EQ(stored("file", contents), url);
        EXPECT_EQ(readVersion(storage, root, url), contents);
    }
}

TEST_F(ObjectStorage, IsNotKeptFromStoringByAFolderInTheOldPlace) {
    const OdString url = urlOf("contents");
    fs::create_directories(objectOf(url) / "sub");
    EXPECT_EQ(storage.verify(root, url).error().message,
              L"The stored version '" + url + L"' cannot be read: Is a directory");
    EXPECT_EQ(stored("file", "contents"), url);
    EXPECT_EQ(readVersion(storage, root, url), "contents");
}

TEST_F(ObjectStorage, KeepsNoObjectsBehindALink) {
    fs::create_directory(folder / "elsewhere");
    fs::create_directory_symlink("../elsewhere", folder / ".qrv/packs");
    writeFile(folder / "file", "contents");
    EXPECT_TRUE(storage.store(root, L"file"));
    EXPECT_EQ(storage.flush(root).error().message,
              OdString(L"'.qrv/packs' cannot be written: it is a symbolic link, or one leads to "
                       L"it"));
    EXPECT_THAT(listTree(folder / "elsewhere"), IsEmpty());
}

TEST_F(ObjectStorage, RemovesOldLeftoversOnItsFirstUse) {
    writeFile(folder / ".qrv/packs/.1-0.qrv-tmp", "");
    writeFile(folder / ".qrv/packs/.1-1.qrv-tmp", "");
    fs::last_write_time(folder / ".qrv/packs/.1-0.qrv-tmp",
                        fs::file_time_type::clock::now() - std::chrono::hours(25));
    stored("file", "contents");
    EXPECT_THAT(packs(), UnorderedElementsAre(".1-1.qrv-tmp", MatchesRegex(".*\\.pack")));
}

TEST_F(ObjectStorage, KnowsWhatItKeeps) {
    const OdString url = stored("file", "contents");
    const OdString other = urlOf("other");
    const OdString drawing = L"tf:store#" + url.right(64);
    EXPECT_TRUE(storage.contains(root, url).value());
    EXPECT_FALSE(storage.contains(root, other).value());
    EXPECT_FALSE(storage.contains(root, drawing).value());
    EXPECT_THAT(storage.revisions(root, url).value(), ElementsAre(url));
    EXPECT_THAT(storage.revisions(root, other).value(), IsEmpty());
    EXPECT_EQ(storage.open(root, other).value(), nullptr);
    EXPECT_EQ(storage.open(root, drawing).value(), nullptr);
}

TEST_F(ObjectStorage, LooksWithoutMakingAnything) {
    EXPECT_FALSE(storage.contains(root, urlOf("x")).value());
    EXPECT_EQ(storage.open(root, urlOf("x")).value(), nullptr);
    EXPECT_TRUE(storage.remove(root, urlOf("x")));
    EXPECT_TRUE(storage.flush(root));
    EXPECT_THAT(listTree(folder.path()), ElementsAre(".qrv/"));
}

TEST_F(ObjectStorage, RefusesUrlsThatAreNotSafe) {
    const OdString url = L"po:../../" + OdString(std::wstring(58, L'0'));
    const OdString message = L"'" + url + L"' does not name a stored version";
    EXPECT_EQ(storage.open(root, url).error().message, message);
    EXPECT_EQ(storage.contains(root, url).error().message, message);
    EXPECT_EQ(storage.remove(root, url).error().message, message);
    EXPECT_EQ(storage.revisions(root, url).error().message, message);
    EXPECT_EQ(storage.verify(root, url).error().message, message);
    EXPECT_EQ(storage.restore(root, url, L"file").error().message, message);
    EXPECT_EQ(storage.exportTo(root, url, folder.text("file")).error().message, message);
    EXPECT_EQ(storage.compare(root, url, url).error().message, message);
}

TEST_F(ObjectStorage, ForgetsAnObject) {
    const OdString url = stored("file", "contents");
    const OdString other = stored("other", "other");
    EXPECT_TRUE(storage.remove(root, url));
    EXPECT_TRUE(storage.remove(root, url));
    EXPECT_FALSE(storage.contains(root, url).value());
    EXPECT_EQ(readVersion(storage, root, other), "other");
    EXPECT_THAT(packs(), SizeIs(1));
    EXPECT_TRUE(storage.store(root, L"file"));
    EXPECT_TRUE(storage.remove(root, url));
    EXPECT_FALSE(storage.contains(root, url).value());
    const OdString plain = storedPlain("plain");
    EXPECT_TRUE(storage.remove(root, plain));
    EXPECT_THAT(objects(), IsEmpty());
}

TEST_F(ObjectStorage, FindsWhatEarlierProgramsHavePacked) {
    const OdString url = storedPlain("contents");
    pack(url);
    EXPECT_THAT(objects(), IsEmpty());
    EXPECT_TRUE(storage.contains(root, url).value());
    EXPECT_EQ(readVersion(storage, root, url), "contents");
    EXPECT_EQ(stored("again", "contents"), url);
    EXPECT_THAT(packs(), IsEmpty());
    EXPECT_TRUE(storage.restore(root, url, L"restored").value());
    EXPECT_EQ(readFile(folder / "restored"), "contents");
    EXPECT_TRUE(storage.remove(root, url));
    EXPECT_FALSE(storage.contains(root, url).value());
}

TEST_F(ObjectStorage, AnswersWithAnErrorWhenThePackIsNone) {
    writeFile(folder / ".qrv/objects.pack", "this is no database");
    const Expected<bool> isKept = storage.contains(root, urlOf("x"));
    ASSERT_FALSE(isKept);
    EXPECT_THAT(isKept.error().message.toNarrow(), testing::HasSubstr("objects.pack"));
    EXPECT_FALSE(storage.open(root, urlOf("x")));
    writeFile(folder / "file", "contents");
    EXPECT_FALSE(storage.store(root, L"file"));
}

}  // namespace
