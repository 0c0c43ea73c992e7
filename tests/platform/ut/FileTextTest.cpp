#include <platform/ut/ReadEntireFile.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

namespace {

using qrv_test::TemporaryFolder;
using namespace std::string_literals;

TEST(FileText, Decodes) {
    struct Case {
        std::string bytes;
        std::wstring units;
    };
    const Case cases[] = {
        {"", L""},
        {"plain\n", L"plain\n"},
        {"a\0b"s, {L'a', 0, L'b'}},
        {"\xEF\xBB\xBF"
         "a",
         L"a"},
        {"\xEF\xBB\xBF\xEF\xBB\xBF", {0xFEFF}},
        {"\xEF\xBB", {0xDCEF, 0xDCBB}},
        {"\xC3\xA4\xF0\x9F\x93\x90", {0xE4, 0xD83D, 0xDCD0}},
        {"\xFF", {0xDCFF}},
        {"\xFF"
         "a",
         {0xDCFF, L'a'}},
        {"\xFE", {0xDCFE}},
        {"a\xFF\xFE", {L'a', 0xDCFF, 0xDCFE}},
        {"\xED\xA0\x80", {0xDCED, 0xDCA0, 0xDC80}},
        {"\xC0\x80", {0xDCC0, 0xDC80}},
        {"\xFF\xFE", L""},
        {"\xFE\xFF", L""},
        {"\xFF\xFE"
         "a\0\xE4\0\x3D\xD8\xD0\xDC"s,
         {L'a', 0xE4, 0xD83D, 0xDCD0}},
        {"\xFE\xFF\0a\0\xE4\xD8\x3D\xDC\xD0"s, {L'a', 0xE4, 0xD83D, 0xDCD0}},
        {"\xFF\xFE\xFF\xFE", {0xFEFF}},
        {"\xFF\xFE\0\0"s, {0}},
        {"\xFF\xFE\x3D\xD8", {0xD83D}},
        {"\xFF\xFE"
         "a\0b"s,
         {L'a', 0xFFFD}},
        {"\xFE\xFF\0a\0"s, {L'a', 0xFFFD}},
        {"\xFF\xFE"
         "a",
         {0xFFFD}},
    };
    const TemporaryFolder folder;
    for (const Case& entry : cases) {
        qrv_test::writeFile(folder / "file", entry.bytes);
        EXPECT_EQ(ut::readEntireFile(folder.text("file")).toWide(), entry.units)
            << testing::PrintToString(entry.bytes);
    }
}

TEST(FileText, IsWholeWhateverTheFilesLength) {
    const TemporaryFolder folder;
    for (const std::size_t length : {1U, 4095U, 4096U, 4097U, 65536U, 1000003U}) {
        std::string bytes;
        while (bytes.size() < length)
            bytes += static_cast<char>('a' + bytes.size() % 26);
        qrv_test::writeFile(folder / "file", bytes);
        EXPECT_TRUE(ut::readEntireFile(folder.text("file")).toNarrow() == bytes) << length;
    }
}

TEST(FileText, IsWholeWhenTheSystemDoesNotKnowTheSize) {
    ASSERT_EQ(std::filesystem::file_size("/proc/self/mountinfo"), 0U);
    const std::string bytes = qrv_test::readFile("/proc/self/mountinfo");
    ASSERT_FALSE(bytes.empty());
    EXPECT_EQ(ut::readEntireFile(L"/proc/self/mountinfo").toNarrow(), bytes);
}

TEST(FileText, SurvivesAFileThatGrowsAndShrinks) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "a");
    std::atomic<bool> isDone = false;
    std::thread other([&] {
        while (!isDone) {
            std::filesystem::resize_file(folder / "file", 300000);
            std::filesystem::resize_file(folder / "file", 1);
        }
    });
    bool isWellFormed = true;
    for (int round = 0; round < 500; ++round) {
        const std::string bytes = ut::readEntireFile(folder.text("file")).toNarrow();
        isWellFormed = isWellFormed && bytes.size() <= 300000 &&
                       bytes == "a" + std::string(bytes.size() - 1, '\0');
    }
    isDone = true;
    other.join();
    EXPECT_TRUE(isWellFormed);
}

}  // namespace
