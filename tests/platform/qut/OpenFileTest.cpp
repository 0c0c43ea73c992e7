#include <platform/qut/OpenFile.h>
#include <platform/ut/ScopedFault.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::TemporaryFolder;

auto openDescriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

// Opens, writes "new" and closes.
bool writeNew(const OdString& path, QIODevice::OpenMode mode) {
    QFile file;
    return qut::openFile(file, path, mode) && file.isWritable() && file.write("new") == 3;
}

TEST(OpenFile, Reads) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "a\r\nb");
    QFile file;
    ASSERT_TRUE(qut::openFile(file, folder.text("file"), QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll().toStdString(), "a\r\nb");
    file.close();
    ASSERT_TRUE(qut::openFile(file, folder.text("file"), QIODevice::ReadOnly | QIODevice::Text));
    EXPECT_EQ(file.readAll().toStdString(), "a\nb");
}

TEST(OpenFile, WritesByTheModeAsQtDoes) {
    struct Case {
        QIODevice::OpenMode mode;
        std::string onOld, onMissing;
    };
    const Case cases[] = {
        {QIODevice::WriteOnly, "new", "new"},
        {QIODevice::WriteOnly | QIODevice::Truncate, "new", "new"},
        {QIODevice::WriteOnly | QIODevice::Append, "contentsnew", "new"},
        {QIODevice::Append, "contentsnew", "new"},
        {QIODevice::ReadWrite, "newtents", "new"},
        {QIODevice::ReadWrite | QIODevice::Truncate, "new", "new"},
        {QIODevice::ReadWrite | QIODevice::Append, "contentsnew", "new"},
        {QIODevice::WriteOnly | QIODevice::NewOnly, "refused", "new"},
        {QIODevice::WriteOnly | QIODevice::ExistingOnly, "new", "refused"},
        {QIODevice::ReadOnly, "refused", "refused"},
    };
    const TemporaryFolder folder;
    for (const Case& entry : cases) {
        qrv_test::writeFile(folder / "old", "contents");
        fs::remove(folder / "missing");
        for (const auto& [name, expected] :
             {std::pair("old", entry.onOld), {"missing", entry.onMissing}}) {
            const bool isWritten = writeNew(folder.text(name), entry.mode);
            EXPECT_EQ(isWritten ? qrv_test::readFile(folder / name) : "refused", expected)
                << name << ", mode " << static_cast<int>(entry.mode);
        }
    }
}

TEST(OpenFile, ReachesANameThatIsNoUtf8) {
    const TemporaryFolder folder;
    ASSERT_TRUE(writeNew(folder.text("\xFF\xC3"), QIODevice::WriteOnly));
    EXPECT_EQ(qrv_test::listTree(folder.path()), std::vector<std::string>{"\xFF\xC3"});
}

TEST(OpenFile, RefusesAPathWithANulInside) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "old");
    for (const char* name : {"file", "missing"}) {
        OdString path = folder.text(name);
        path += OdString(std::wstring(L"\0.log", 5));
        for (const auto mode : {QIODevice::WriteOnly, QIODevice::Append, QIODevice::ReadOnly}) {
            QFile file;
            EXPECT_FALSE(qut::openFile(file, path, mode)) << name;
        }
    }
    EXPECT_EQ(qrv_test::listTree(folder.path()), std::vector<std::string>{"file"});
    EXPECT_EQ(qrv_test::readFile(folder / "file"), "old");
}

TEST(OpenFile, RefusesWhatIsNoRegularFile) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "folder");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    const auto before = openDescriptors();
    for (const char* name : {"folder", "pipe", "missing/file"}) {
        for (const auto mode : {QIODevice::ReadOnly, QIODevice::WriteOnly, QIODevice::ReadWrite}) {
            QFile file;
            EXPECT_FALSE(qut::openFile(file, folder.text(name), mode)) << name;
            EXPECT_FALSE(file.isOpen()) << name;
        }
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(OpenFile, TouchesNothingWhenTheFileIsOpenOrTheModeSaysNothing) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "first", "first");
    qrv_test::writeFile(folder / "second", "second");
    QFile file;
    EXPECT_FALSE(qut::openFile(file, folder.text("first"), QIODevice::Truncate));
    ASSERT_TRUE(qut::openFile(file, folder.text("first"), QIODevice::ReadOnly));
    const auto before = openDescriptors();
    EXPECT_FALSE(qut::openFile(file, folder.text("second"), QIODevice::WriteOnly));
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(file.readAll().toStdString(), "first");
    EXPECT_EQ(qrv_test::readFile(folder / "first"), "first");
    EXPECT_EQ(qrv_test::readFile(folder / "second"), "second");
}

TEST(OpenFile, ClosesTheDescriptorWithTheFile) {
    const TemporaryFolder folder;
    const auto before = openDescriptors();
    {
        QFile file;
        ASSERT_TRUE(qut::openFile(file, folder.text("file"), QIODevice::WriteOnly));
        EXPECT_EQ(openDescriptors(), before + 1);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(OpenFile, GivesANewFileWhatTheProcessMaskLeaves) {
    const TemporaryFolder folder;
    const mode_t old = umask(027);
    const bool isWritten = writeNew(folder.text("file"), QIODevice::WriteOnly);
    umask(old);
    ASSERT_TRUE(isWritten);
    EXPECT_EQ(fs::status(folder / "file").permissions(), fs::perms(0640));
}

TEST(OpenFile, FailsWhenACallFails) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "old");
    const auto before = openDescriptors();
    for (const int nth : {1, 2}) {
        QFile file;
        const ut::ScopedFault fault(nth, EACCES);
        EXPECT_FALSE(qut::openFile(file, folder.text("file"), QIODevice::ReadOnly)) << nth;
        EXPECT_TRUE(fault.hasFired()) << nth;
        EXPECT_FALSE(file.isOpen()) << nth;
    }
    EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
