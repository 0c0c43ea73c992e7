#include <platform/qut/OpenFile.h>
#include <platform/ut/ScopedFault.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

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

TEST(OpenFile, RefusesAFolder) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "folder");
    const auto before = openDescriptors();
    for (const char* name : {"folder", "missing/file"}) {
        for (const auto mode : {QIODevice::ReadOnly, QIODevice::WriteOnly, QIODevice::ReadWrite}) {
            QFile file;
            EXPECT_FALSE(qut::openFile(file, folder.text(name), mode)) << name;
            EXPECT_FALSE(file.isOpen()) << name;
        }
    }
    EXPECT_EQ(openDescriptors(), before);
}

// Symptom: a log that leads to a device or a pipe was refused, though Qt's own file opens it.
// Cause: everything but a regular file was refused, so that no pipe could hold the process up.
TEST(OpenFile, WritesToADevice) {
    const TemporaryFolder folder;
    fs::create_symlink("/dev/null", folder / "null");
    fs::create_symlink("/dev/full", folder / "full");
    for (const auto mode :
         {QIODevice::OpenMode(QIODevice::WriteOnly), QIODevice::WriteOnly | QIODevice::Append}) {
        EXPECT_TRUE(writeNew(folder.text("null"), mode));
        QFile full;
        EXPECT_TRUE(qut::openFile(full, folder.text("full"), mode));
        full.write("new");
        EXPECT_FALSE(full.flush());
    }
    QFile null;
    ASSERT_TRUE(qut::openFile(null, folder.text("null"), QIODevice::ReadOnly));
    EXPECT_EQ(null.readAll(), "");
}

TEST(OpenFile, WritesToAPipeThatSomebodyReadsAndWaitsForNobody) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    EXPECT_FALSE(writeNew(folder.text("pipe"), QIODevice::WriteOnly));
    const int reader = open((folder / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    for (const auto mode :
         {QIODevice::OpenMode(QIODevice::WriteOnly), QIODevice::WriteOnly | QIODevice::Append}) {
        EXPECT_TRUE(writeNew(folder.text("pipe"), mode));
        char bytes[8] = {};
        EXPECT_EQ(read(reader, bytes, sizeof bytes), 3);
        EXPECT_STREQ(bytes, "new");
    }
    close(reader);
    QFile file;
    ASSERT_TRUE(qut::openFile(file, folder.text("pipe"), QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "");
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
