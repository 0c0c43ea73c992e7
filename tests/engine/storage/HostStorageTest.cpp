#include <engine/storage/Storages.h>
#include <sys/ScopedFault.h>
#include <tests/engine/storage/Contents.h>
#include <tests/engine/storage/StorageFolder.h>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv::RelativePath;
using qrv_test::listTree;
using qrv_test::readFile;
using qrv_test::readVersion;
using qrv_test::writeFile;
using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;

class HostStorage : public qrv_test::StorageFolder {
protected:
    /// Flips one bit in the middle of an object.
    void damage(const OdString& url) const {
        std::string contents = readFile(objectOf(url));
        contents[contents.size() / 2] ^= 0x10;
        fs::permissions(objectOf(url), fs::perms(0644));
        writeFile(objectOf(url), contents);
    }
    static OdString damageOf(const OdString& url) {
        return L"The stored version '" + url + L"' is damaged: its contents have another digest";
    }
    /// Everything outside the metadata folder.
    std::vector<std::string> workingTree() const {
        std::vector<std::string> names = listTree(folder.path());
        std::erase_if(names, [](const std::string& name) { return name.starts_with(".qrv/"); });
        return names;
    }
};

TEST_F(HostStorage, RestoresAFileAndItsFolders) {
    const OdString url = stored("file", "contents");
    EXPECT_TRUE(storage.restore(root, url, L"plans/new/file").value());
    EXPECT_EQ(readFile(folder / "plans/new/file"), "contents");
    EXPECT_EQ(permissions(folder / "plans/new/file"), 0644U);
    EXPECT_THAT(workingTree(), ElementsAre("file", "plans/", "plans/new/", "plans/new/file"));
}

TEST_F(HostStorage, RestoresOverAFileAndKeepsItsPermissions) {
    const OdString url = stored("file", "contents");
    for (const std::uint32_t mode : {0600U, 0666U, 0755U, 0444U}) {
        fs::remove(folder / "old");
        writeFile(folder / "old", "old");
        fs::permissions(folder / "old", fs::perms(mode));
        EXPECT_TRUE(storage.restore(root, url, L"old").value());
        EXPECT_EQ(readFile(folder / "old"), "contents");
        EXPECT_EQ(permissions(folder / "old"), mode);
    }
}

// Symptom: a file that root restored was not its owner's any more.
// Cause: only the permissions were taken over from the file that was replaced.
TEST_F(HostStorage, RestoresOverAFileAndLeavesItToItsOwner) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root may give a file away";
    const OdString url = stored("file", "contents");
    writeFile(folder / "old", "old");
    ASSERT_EQ(::chown((folder / "old").c_str(), 1000, 2000), 0);
    fs::permissions(folder / "old", fs::perms(0660));
    EXPECT_TRUE(storage.restore(root, url, L"old").value());
    struct stat status = {};
    ASSERT_EQ(::stat((folder / "old").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 1000U);
    EXPECT_EQ(status.st_gid, 2000U);
    EXPECT_EQ(permissions(folder / "old"), 0660U);
}

TEST_F(HostStorage, RestoresLargeAndEmptyFiles) {
    for (const std::size_t size : {0UL, 262143UL, 262144UL, 1000000UL}) {
        const std::string contents(size, 'x');
        EXPECT_TRUE(storage.restore(root, stored("file", contents), L"copy").value());
        EXPECT_EQ(readFile(folder / "copy"), contents) << size;
    }
}

TEST_F(HostStorage, RestoresInPlaceOfALinkAndNotThroughIt) {
    const OdString url = stored("file", "contents");
    writeFile(folder / "target", "kept");
    fs::create_symlink("target", folder / "link");
    EXPECT_TRUE(storage.restore(root, url, L"link").value());
    EXPECT_EQ(readFile(folder / "target"), "kept");
    EXPECT_FALSE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(permissions(folder / "link"), 0644U);
}

TEST_F(HostStorage, DoesNotRestoreThroughALinkedFolder) {
    const OdString url = stored("file", "contents");
    fs::create_directory(folder / "outside");
    fs::create_directory_symlink("outside", folder / "drawings");
    EXPECT_EQ(storage.restore(root, url, L"drawings/file").error().message,
              OdString(L"'drawings/file' cannot be written: it is a symbolic link, or one leads to "
                       L"it"));
    EXPECT_THAT(listTree(folder / "outside"), testing::IsEmpty());
}

TEST_F(HostStorage, DoesNotRestoreOverAFolderOrThroughAFile) {
    const OdString url = stored("file", "contents");
    fs::create_directory(folder / "folder");
    EXPECT_EQ(storage.restore(root, url, L"folder").error().message,
              OdString(L"'folder' cannot be written: Is a directory"));
    EXPECT_EQ(storage.prepare(root, url, *RelativePath::check(L"folder")).error().message,
              OdString(L"'folder' cannot be written: Is a directory"));
    EXPECT_EQ(storage.restore(root, url, L"file/below").error().message,
              OdString(L"'file/below' cannot be written: Not a directory"));
    EXPECT_THAT(workingTree(), ElementsAre("file", "folder/"));
}

TEST_F(HostStorage, DoesNotRestoreToAPathThatIsNotSafe) {
    const OdString url = stored("file", "contents");
    EXPECT_EQ(storage.restore(root, url, L".QRV/qrv.state").error().message,
              OdString(L"'.QRV/qrv.state' cannot be used as a path: it could lead into the "
                       L"repository's own folder"));
    EXPECT_THAT(workingTree(), ElementsAre("file"));
}

TEST_F(HostStorage, AnswersNoWhenTheVersionIsNotKept) {
    const OdString url = urlOf("never stored");
    EXPECT_FALSE(storage.restore(root, url, L"file").value());
    const OdString message = L"The stored version '" + url + L"' is not in the repository";
    EXPECT_EQ(storage.prepare(root, url, *RelativePath::check(L"file")).error().message, message);
    EXPECT_EQ(storage.exportTo(root, url, folder.text("file")).error().message, message);
    EXPECT_EQ(storage.verify(root, url).error().message, message);
    EXPECT_THAT(workingTree(), testing::IsEmpty());
}

TEST_F(HostStorage, PreparesAFileWhichTheCallerPublishes) {
    const OdString url = stored("file", "contents");
    writeFile(folder / "old", "old");
    {
        Expected<sys::NewFile> file = storage.prepare(root, url, *RelativePath::check(L"old"));
        ASSERT_TRUE(file);
        EXPECT_EQ(readFile(folder / "old"), "old");
        EXPECT_FALSE(file->flush());
        EXPECT_FALSE(file->publish(sys::NewFile::Existing::replace));
        EXPECT_EQ(readFile(folder / "old"), "contents");
    }
    EXPECT_TRUE(storage.prepare(root, url, *RelativePath::check(L"dropped")));
    EXPECT_THAT(workingTree(), ElementsAre("file", "old"));
}

TEST_F(HostStorage, PublishesNothingOfADamagedVersion) {
    for (const std::string& contents : {std::string("x"), std::string(1000000, 'x')}) {
        const OdString url = storedPlain(contents);
        writeFile(folder / "file", contents);
        damage(url);
        writeFile(folder / "old", "old");
        EXPECT_EQ(storage.verify(root, url).error().message, damageOf(url));
        EXPECT_EQ(storage.restore(root, url, L"old").error().message, damageOf(url));
        EXPECT_EQ(storage.exportTo(root, url, folder.text("exported")).error().message,
                  damageOf(url));
        EXPECT_EQ(storage.prepare(root, url, *RelativePath::check(L"new")).error().message,
                  damageOf(url));
        EXPECT_EQ(readFile(folder / "old"), "old");
        EXPECT_THAT(workingTree(), ElementsAre("file", "old"));
    }
}

TEST_F(HostStorage, FindsAVersionWholeOrDamaged) {
    const OdString url = storedPlain("contents");
    EXPECT_TRUE(storage.verify(root, url));
    fs::resize_file(objectOf(url), 3);
    EXPECT_EQ(storage.verify(root, url).error().message, damageOf(url));
}

TEST_F(HostStorage, ExportsToAnyPlaceAlsoThroughALink) {
    const OdString url = stored("file", "contents");
    const qrv_test::TemporaryFolder elsewhere;
    fs::create_directory(elsewhere / "folder");
    fs::create_directory_symlink("folder", elsewhere / "link");
    writeFile(elsewhere / "folder/old", "old");
    fs::permissions(elsewhere / "folder/old", fs::perms(0600));
    EXPECT_TRUE(storage.exportTo(root, url, elsewhere.text("link/new")));
    EXPECT_TRUE(storage.exportTo(root, url, elsewhere.text("folder/old")));
    EXPECT_EQ(readFile(elsewhere / "folder/new"), "contents");
    EXPECT_EQ(readFile(elsewhere / "folder/old"), "contents");
    EXPECT_EQ(permissions(elsewhere / "folder/old"), 0600U);
}

TEST_F(HostStorage, SaysWhyItCannotExport) {
    const OdString url = stored("file", "contents");
    const OdString missing = folder.text("none/file");
    EXPECT_EQ(storage.exportTo(root, url, missing).error().message,
              L"'" + missing + L"' cannot be written: No such file or directory");
    EXPECT_EQ(storage.exportTo(root, url, folder.text()).error().message,
              L"'" + folder.text() + L"' cannot be written: Is a directory");
    EXPECT_FALSE(storage.exportTo(root, url, folder.text() + L"/"));
}

TEST_F(HostStorage, ComparesOnlyWhatIsEqual) {
    const OdString url = stored("file", "contents");
    EXPECT_TRUE(storage.compare(root, url, url).value() == common::DiffHandles());
    EXPECT_TRUE(storage.compare(root, url, L"tf:store#" + url.right(64)));
    EXPECT_EQ(storage.compare(root, url, urlOf("other")).error().message,
              OdString(L"The two versions differ, but this program does not look into drawings"));
}

TEST_F(HostStorage, LeavesTheOldOrTheNewFileWhicheverCallFails) {
    const OdString url = stored("file", "contents");
    int failures = 0;
    for (int nth = 1;; ++nth) {
        writeFile(folder / "plans/old", "old");
        const sys::ScopedFault fault(nth, EIO);
        const Expected<bool> restored = storage.restore(root, url, L"plans/old");
        EXPECT_THAT(workingTree(), ElementsAre("file", "plans/", "plans/old")) << nth;
        EXPECT_THAT(readFile(folder / "plans/old"), AnyOf("old", "contents")) << nth;
        if (!fault.hasFired())
            break;
        if (!restored) {
            EXPECT_THAT(restored.error().message.toNarrow(), HasSubstr(": Input/output error"))
                << nth;
            ++failures;
        }
    }
    EXPECT_GE(failures, 12);
}

TEST_F(HostStorage, StoresAllOrNothingWhicheverCallFails) {
    const std::string large = qrv_test::randomBytes(600000, 1);
    writeFile(folder / "small", "contents");
    writeFile(folder / "large", large);
    int failures = 0;
    for (int nth = 1;; ++nth) {
        fs::remove_all(folder / ".qrv/packs");
        bool isStored = false;
        {
            qrv::ObjectStorage another;
            const sys::ScopedFault fault(nth, ENOSPC);
            const auto small = another.store(root, L"small");
            const auto big = another.store(root, L"large");
            isStored = small && big && another.flush(root);
            if (!fault.hasFired())
                break;
        }
        failures += isStored ? 0 : 1;
        qrv::ObjectStorage reader;
        const bool isThere = reader.contains(root, urlOf("contents")).value();
        EXPECT_TRUE(isThere || !isStored) << nth;
        EXPECT_EQ(packs().size(), isThere ? 1U : 0U) << nth;
        if (isThere) {
            EXPECT_TRUE(readVersion(reader, root, urlOf("contents")) == "contents") << nth;
            EXPECT_TRUE(readVersion(reader, root, urlOf(large)) == large) << nth;
        }
    }
    EXPECT_GE(failures, 20);
}

TEST_F(HostStorage, WhatCouldNotBeWrittenIsNotMissedAtTheEnd) {
    writeFile(folder / "large", qrv_test::randomBytes(600000, 1));
    for (int nth = 1;; ++nth) {
        qrv::ObjectStorage another;
        bool isStored = false;
        {
            const sys::ScopedFault fault(nth, ENOSPC);
            isStored = another.store(root, L"large").hasValue();
            if (!fault.hasFired())
                break;
        }
        const Expected<void> flushed = another.flush(root);
        const bool isThere =
            qrv::ObjectStorage().contains(root, urlOf(readFile(folder / "large"))).value();
        EXPECT_TRUE(!isStored || isThere == flushed.hasValue()) << nth;
    }
}

TEST_F(HostStorage, NamesTheFileWhenTheDiskIsFull) {
    writeFile(folder / "plan.pdf", qrv_test::randomBytes(600000, 1));
    bool wasNamed = false;
    for (int nth = 1; nth < 30; ++nth) {
        qrv::ObjectStorage another;
        const sys::ScopedFault fault(nth, ENOSPC);
        const Expected<OdString> result = another.store(root, L"plan.pdf");
        wasNamed =
            wasNamed ||
            (!result && result.error().message ==
                            OdString(L"'plan.pdf' cannot be stored: No space left on device"));
    }
    EXPECT_TRUE(wasNamed);
}

TEST_F(HostStorage, SaysThatAFileMayNotBeRead) {
    writeFile(folder / "secret", "contents");
    EXPECT_TRUE(storage.store(root, L"secret"));
    const sys::ScopedFault fault(1, EACCES);
    EXPECT_EQ(storage.store(root, L"secret").error().message,
              OdString(L"'secret' cannot be stored: Permission denied"));
}

/// The largest memory that the process had at once since `forgetPeak`, in KiB.
long peakKiB() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("VmHWM:"))
            return std::stol(line.substr(6));
    }
    return -1;
}

void forgetPeak() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

TEST_F(HostStorage, NeedsLittleMemoryForALargeFile) {
    writeFile(folder / "large", "begin");
    fs::resize_file(folder / "large", 100000000);
    forgetPeak();
    const long before = peakKiB();
    ASSERT_GT(before, 0);
    const OdString url = storage.store(root, L"large").value();
    EXPECT_TRUE(storage.flush(root));
    EXPECT_TRUE(storage.restore(root, url, L"restored").value());
    EXPECT_LT(peakKiB() - before, 128 * 1024);
    EXPECT_EQ(fs::file_size(folder / "restored"), 100000000U);
    EXPECT_TRUE(storage.verify(root, url));
}

TEST(Storages, AskTheOneThatIsConcerned) {
    qrv::Storages storages([](const OdString&) { return OdString(); });
    qrv::HostStorage& objects = storages.objects();
    EXPECT_EQ(&storages.ofUrl(L"po:1"), &objects);
    EXPECT_NE(&storages.ofUrl(L"tf:a#1"), &objects);
    EXPECT_EQ(&storages.ofFile(L"a.dxf"), &objects);
    EXPECT_NE(&storages.ofFile(L"a.DWG"), &objects);
    EXPECT_EQ(&storages.ofFile(L".qrv/properties/ignore"), &objects);
}

}  // namespace
