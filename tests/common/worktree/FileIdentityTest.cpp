#include <common/worktree/FileIdentity.h>
#include <platform/ut/ScopedFault.h>
#include <tests/common/worktree/TemporaryRepository.h>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

constexpr const wchar_t* digestOfNothing =
    L"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
constexpr const wchar_t* digestOfAbc =
    L"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

/// Bytes of which no two near stretches are equal.
std::string variedBytes(std::size_t count) {
    std::string bytes(count, '\0');
    std::uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>((state >> 24) | 1U);
    }
    return bytes;
}

OdString digestOf(const std::string& bytes) {
    return generateSha(bytes.data(), static_cast<int>(bytes.size()));
}

long peakMemoryKib() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

class IsDifferent : public testing::Test {
protected:
    bool answer(const OdString& digest, const OdString& prefix = L"po:") const {
        return common::isDifferent(L"file", prefix + digest, repository.root);
    }
    void writeFile(std::string_view bytes) const {
        qrv_test::writeFile(repository.folder / "file", bytes);
    }

    qrv_test::TemporaryRepository repository;
};

}  // namespace

TEST(GenerateSha, KnowsThePublishedDigests) {
    EXPECT_EQ(generateSha("", 0), digestOfNothing);
    EXPECT_EQ(generateSha("abc", 3), digestOfAbc);
    EXPECT_EQ(digestOf(std::string(1000000, 'a')),
              L"cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(GenerateSha, TakesAsManyBytesAsItIsTold) {
    EXPECT_EQ(generateSha("abcdef", 3), digestOfAbc);
    EXPECT_EQ(generateSha("\0b", 2), digestOf(std::string("\0b", 2)));
    EXPECT_NE(generateSha("\0b", 2), generateSha("\0c", 2));
    EXPECT_EQ(generateSha(nullptr, 0), digestOfNothing);
    EXPECT_EQ(generateSha("abc", -1), digestOfNothing);
}

TEST(GenerateSha, HashesTheNarrowFormOfATextUpToTheTextsLength) {
    EXPECT_EQ(generateSha(OdString(L"")), digestOfNothing);
    EXPECT_EQ(generateSha(OdString(L"abc")), digestOfAbc);
    // One unit each, so one byte each, though the narrow forms have 2, 1 and 4 bytes.
    EXPECT_EQ(generateSha(OdString::fromNarrow("\xC3\xA9")), generateSha("\xC3", 1));
    EXPECT_EQ(generateSha(OdString::fromNarrow("\xFF")), generateSha("\xFF", 1));
    EXPECT_EQ(generateSha(OdString::fromNarrow("\xF0\x9F\x93\x90")), generateSha("\xF0\x9F", 2));
}

TEST_F(IsDifferent, SaysYesForADrawingWithoutReadingAnything) {
    for (const wchar_t* url : {L"tf", L"tf:plan#1", L"tfx"})
        EXPECT_TRUE(common::isDifferent(L"missing", url, repository.root))
            << OdString(url).toNarrow();
    writeFile("abc");
    EXPECT_TRUE(answer(digestOfAbc, L"tf:"));
    const ut::ScopedFault counter(1000, EIO);
    EXPECT_TRUE(answer(digestOfAbc, L"tf:"));
    EXPECT_EQ(counter.callCount(), 0);
}

TEST_F(IsDifferent, ComparesTheDigestBehindTheThirdCharacter) {
    writeFile("abc");
    EXPECT_FALSE(answer(digestOfAbc));
    EXPECT_FALSE(answer(digestOfAbc, L"xyz"));
    EXPECT_FALSE(answer(digestOfAbc, L"TF:"));
    EXPECT_TRUE(answer(digestOfAbc, L"po"));
    EXPECT_TRUE(answer(digestOfAbc, L"po::"));
    EXPECT_TRUE(answer(OdString(digestOfAbc).makeUpper()));
    EXPECT_TRUE(answer(OdString(digestOfAbc) + L" "));
    EXPECT_TRUE(answer(digestOfNothing));
    EXPECT_TRUE(answer(L""));
    EXPECT_TRUE(answer(L"", L""));
}

TEST_F(IsDifferent, ReadsFilesOfAnySizeWhole) {
    for (const std::size_t size : {0U, 1U, 8192U, 65535U, 65536U, 65537U, 131072U, 300001U}) {
        std::string bytes = variedBytes(size);
        writeFile(bytes);
        EXPECT_FALSE(answer(digestOf(bytes))) << size;
        bytes += 'x';
        EXPECT_TRUE(answer(digestOf(bytes))) << size;
    }
}

TEST_F(IsDifferent, TakesWhatCannotBeOpenedForAnEmptyFile) {
    EXPECT_FALSE(answer(digestOfNothing));
    EXPECT_TRUE(answer(digestOfAbc));
    EXPECT_FALSE(common::isDifferent(L"", OdString(L"po:") + digestOfNothing, repository.root));
    EXPECT_FALSE(common::isDifferent(L".qrv", OdString(L"po:") + digestOfNothing, repository.root));
    ASSERT_EQ(mkfifo((repository.folder / "file").c_str(), 0600), 0);
    EXPECT_FALSE(answer(digestOfNothing));
}

TEST_F(IsDifferent, JoinsThePathAsItIs) {
    qrv_test::writeFile(repository.folder / "a/caf\xE9\n.dwg", "abc");
    const OdString url = OdString(L"po:") + digestOfAbc;
    const auto differs = [&](const char* path) {
        return common::isDifferent(OdString::fromNarrow(path), url, repository.root);
    };
    EXPECT_FALSE(differs("a/caf\xE9\n.dwg"));
    EXPECT_FALSE(differs("/a//../a/caf\xE9\n.dwg"));
    EXPECT_TRUE(differs("a\\caf\xE9\n.dwg"));
    EXPECT_TRUE(differs("a/CAF\xE9\n.dwg"));
}

TEST_F(IsDifferent, HashesZerosForAnEndThatCannotBeRead) {
    constexpr std::size_t size = 200000;
    const std::string bytes = variedBytes(size);
    writeFile(bytes);
    // What a read that fails may leave: nothing at all, or whole pieces and zeros behind them.
    std::set<OdString> allowed = {digestOfNothing, digestOf(bytes)};
    OdString firstPieceOnly;
    for (std::size_t whole = 0; whole < size; whole += 65536) {
        const OdString digest = digestOf(bytes.substr(0, whole) + std::string(size - whole, '\0'));
        allowed.insert(digest);
        if (whole == 65536)
            firstPieceOnly = digest;
    }
    bool sawFirstPieceOnly = false;
    for (int call = 1;; ++call) {
        std::set<OdString> answers;
        for (const OdString& digest : allowed) {
            const ut::ScopedFault fault(call, EIO);
            if (!answer(digest))
                answers.insert(digest);
        }
        EXPECT_EQ(answers.size(), 1U) << "call " << call;
        sawFirstPieceOnly = sawFirstPieceOnly || answers.contains(firstPieceOnly);
        if (answers.contains(digestOf(bytes)))
            break;
    }
    EXPECT_TRUE(sawFirstPieceOnly);
}

TEST_F(IsDifferent, NeedsLittleMemoryForALargeFile) {
    // Zeros that take no room on the disk.
    writeFile("");
    fs::resize_file(repository.folder / "file", 256 << 20);
    const long before = peakMemoryKib();
    EXPECT_FALSE(answer(L"a6d72ac7690f53be6ae46ba88506bd97302a093f7108472bd9efc3cefda06484"));
    EXPECT_LT(peakMemoryKib() - before, 16 * 1024);
}
