#include <platform/kernel/OdError.h>
#include <platform/ut/ReadEntireFile.h>
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

using qrv_test::TemporaryFolder;

// The error's text, or the file's when there is none.
std::string outcomeOf(const OdString& path) {
    try {
        return "read: " + ut::readEntireFile(path).toNarrow();
    } catch (const OdError& error) {
        return error.description().toNarrow();
    }
}

TEST(ReadEntireFile, GivesTheWholeText) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "a\r\nb\n\n");
    EXPECT_EQ(outcomeOf(folder.text("file")), "read: a\r\nb\n\n");
}

TEST(ReadEntireFile, NamesTheFileAndTheCause) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "folder");
    qrv_test::writeFile(folder / "file", "");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    std::filesystem::create_symlink("loop", folder / "loop");
    struct Case {
        std::string name, cause;
    };
    const Case cases[] = {
        {"missing", "No such file or directory"}, {"folder", "Is a directory"},
        {"pipe", "Not a regular file"},           {"loop", "Too many levels of symbolic links"},
        {"file/below", "Not a directory"},        {std::string(256, 'a'), "File name too long"},
        {"\xFF%s", "No such file or directory"},
    };
    for (const Case& entry : cases)
        EXPECT_EQ(outcomeOf(folder.text(entry.name)), "Unable to read file '" +
                                                          folder.path().string() + "/" +
                                                          entry.name + "': " + entry.cause);
}

TEST(ReadEntireFile, RefusesAPathWithANulInside) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "contents");
    OdString path = folder.text("file");
    path += L'\0';
    EXPECT_EQ(outcomeOf(path), "Unable to read file '" + folder.path().string() + "/file" +
                                   std::string(1, '\0') + "': No such file or directory");
}

TEST(ReadEntireFile, RefusesAFileThatNoTextCanHold) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    std::filesystem::resize_file(folder / "file", 1ULL << 40);
    EXPECT_EQ(outcomeOf(folder.text("file")),
              "Unable to read file '" + folder.path().string() + "/file': File too large");
}

TEST(ReadEntireFile, ReportsAFailureOfEachCall) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "contents");
    const std::string failure =
        "Unable to read file '" + folder.path().string() + "/file': Input/output error";
    std::vector<std::string> outcomes;
    for (int nth = 1;; ++nth) {
        const ut::ScopedFault fault(nth, EIO);
        const std::string outcome = outcomeOf(folder.text("file"));
        if (!fault.hasFired())
            break;
        outcomes.push_back(outcome);
    }
    // Opening, asking what it is, reading to the end in two calls; closing has nothing to lose.
    EXPECT_EQ(outcomes,
              (std::vector<std::string>{failure, failure, failure, failure, "read: contents"}));
}

TEST(ReadEntireFile, NamesACauseThatTheSystemHasNoTextFor) {
    const TemporaryFolder folder;
    const ut::ScopedFault fault(1, 9999);
    EXPECT_EQ(outcomeOf(folder.text("file")),
              "Unable to read file '" + folder.path().string() + "/file': Error 9999");
}

}  // namespace
