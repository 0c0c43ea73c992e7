#include <platform/kernel/OdString.h>
#include <tests/support/Effort.h>

#include <gmock/gmock.h>
#include <sys/mman.h>

#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using namespace std::string_view_literals;

std::string inHexadecimal(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char byte : bytes) {
        const auto number = static_cast<unsigned char>(byte);
        text += {digits[number / 16], digits[number % 16], ' '};
    }
    return text;
}

/// Into text and out again. Fails the test with the bytes when they did not survive.
void expectToSurvive(std::string_view bytes) {
    // Millions of times: an assertion of its own each time would take longer than what it looks at.
    if (OdString::fromNarrow(bytes).toNarrow() != bytes)
        FAIL() << inHexadecimal(bytes);
}

std::wstring byteUnits(std::string_view bytes) {
    std::wstring units;
    for (const char byte : bytes)
        units += static_cast<wchar_t>(0xDC00 + static_cast<unsigned char>(byte));
    return units;
}

TEST(Utf8, IsReadAndWrittenWhereItIsValid) {
    const std::pair<std::string_view, std::wstring> cases[] = {
        {""sv, L""},
        {"plan.dwg"sv, L"plan.dwg"},
        {"\x7F"sv, L"\x7F"},
        {"\xC2\x80"sv, L"\x80"},
        {"\xDF\xBF"sv, L"\x7FF"},
        {"\xE0\xA0\x80"sv, L"\x800"},
        {"\xED\x9F\xBF"sv, L"\xD7FF"},
        {"\xEE\x80\x80"sv, L"\xE000"},
        {"\xEF\xBF\xBF"sv, L"\xFFFF"},
        {"\xF0\x90\x80\x80"sv, L"\xD800\xDC00"},
        {"\xF3\xBF\xBF\xBF"sv, L"\xDBBF\xDFFF"},
        {"\xF4\x8F\xBF\xBF"sv, L"\xDBFF\xDFFF"},
        {"M\xC3\xBCller \xE2\x82\xAC \xF0\x9F\x98\x80!"sv, L"M\xFCller \x20AC \xD83D\xDE00!"},
        {"\xEF\xBB\xBFx"sv, L"\xFEFFx"},
        {"a\0b\0"sv, std::wstring(L"a\0b\0", 4)},
        {"\xC3\xA9\0\xC3\xA9"sv, std::wstring(L"\xE9\0\xE9", 3)},
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(OdString::fromNarrow(bytes).toWide(), text) << inHexadecimal(bytes);
        EXPECT_EQ(OdString(text).toNarrow(), bytes) << inHexadecimal(bytes);
    }
}

TEST(Utf8, GivesEachInvalidByteItsOwnUnit) {
    for (const std::string_view bytes : {
             "\x80"sv,
             "\xBF"sv,
             "\xFE"sv,
             "\xFF"sv,
             "\xC3"sv,
             "\xE2\x82"sv,
             "\xF0\x9F\x98"sv,
             // Longer than needed.
             "\xC0\x80"sv,
             "\xC1\xBF"sv,
             "\xE0\x80\x80"sv,
             "\xE0\x9F\xBF"sv,
             "\xF0\x80\x80\x80"sv,
             "\xF0\x8F\xBF\xBF"sv,
             "\xF8\x88\x80\x80\x80"sv,
             "\xFC\x84\x80\x80\x80\x80"sv,
             // Surrogates, alone and as a pair.
             "\xED\xA0\x80"sv,
             "\xED\xBF\xBF"sv,
             "\xED\xB2\x80"sv,
             "\xED\xA0\xBD\xED\xB8\x80"sv,
             // Beyond the last code point.
             "\xF4\x90\x80\x80"sv,
             "\xF5\x80\x80\x80"sv,
             "\xF7\xBF\xBF\xBF"sv,
         }) {
        const OdString text = OdString::fromNarrow(bytes);
        EXPECT_EQ(text.toWide(), byteUnits(bytes)) << inHexadecimal(bytes);
        EXPECT_EQ(text.toNarrow(), bytes) << inHexadecimal(bytes);
    }
}

TEST(Utf8, GoesOnRightAfterAnInvalidByte) {
    const std::pair<std::string_view, std::wstring> cases[] = {
        {"a\xFFz"sv, L"a\xDCFFz"},
        {"\xE2\x82z"sv, L"\xDCE2\xDC82z"},
        {"\xE2\x82\xE2\x82\xAC"sv, L"\xDCE2\xDC82\x20AC"},
        {"\xF0\x9F\xC3\xA9"sv, L"\xDCF0\xDC9F\xE9"},
        {"\xC3\xC3\xA9"sv, L"\xDCC3\xE9"},
        {"\xE2\x82\xAC\xAC"sv, L"\x20AC\xDCAC"},
        {"\xC3\0"sv, std::wstring(L"\xDCC3\0", 2)},
        {"\xF0\x9F\x98\x80\x80"sv, L"\xD83D\xDE00\xDC80"},
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(OdString::fromNarrow(bytes).toWide(), text) << inHexadecimal(bytes);
        EXPECT_EQ(OdString(text).toNarrow(), bytes) << inHexadecimal(bytes);
    }
}

TEST(Utf8, WritesSurrogatesWithoutAPartnerInThreeBytesUnlessTheyStandForAByte) {
    const std::pair<std::wstring, std::string_view> cases[] = {
        {L"\xD800", "\xED\xA0\x80"sv},
        {L"\xDBFF", "\xED\xAF\xBF"sv},
        {L"\xDC00", "\xED\xB0\x80"sv},
        {L"\xDC7F", "\xED\xB1\xBF"sv},
        {L"\xDC80", "\x80"sv},
        {L"\xDCFF", "\xFF"sv},
        {L"\xDD00", "\xED\xB4\x80"sv},
        {L"\xDFFF", "\xED\xBF\xBF"sv},
        {L"\xD83D"
         L"a",
         "\xED\xA0\xBD"
         "a"sv},
        {L"\xD83D\xD83D\xDE00", "\xED\xA0\xBD\xF0\x9F\x98\x80"sv},
        {L"\xDE00\xD83D", "\xED\xB8\x80\xED\xA0\xBD"sv},
        // A pair is a character, also where its second unit alone would be a byte.
        {L"\xD800\xDC80", "\xF0\x90\x82\x80"sv},
    };
    for (const auto& [text, bytes] : cases)
        EXPECT_EQ(OdString(text).toNarrow(), bytes) << inHexadecimal(bytes);
}

TEST(Utf8, SurvivesForEveryCodePoint) {
    for (int codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        const OdString text(std::wstring(1, static_cast<wchar_t>(codePoint)));
        const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
        const bool isByteUnit = codePoint >= 0xDC80 && codePoint <= 0xDCFF;
        const bool comesBack = OdString::fromNarrow(text.toNarrow()) == text;
        ASSERT_EQ(comesBack, !isSurrogate || isByteUnit) << codePoint;
    }
}

constexpr std::string_view edges =
    "a\0\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xEC\xED\xEF\xF0\xF3\xF4\xF5\xFF"sv;

/// All bytes, or those on either side of each edge of the rules.
std::string thirdBytes() {
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    return qrv_test::isExhaustive() ? all : std::string(edges);
}

TEST(Utf8, KeepsInputsOfUpToThreeBytes) {
    const std::string thirds = thirdBytes();
    std::string bytes;
    expectToSurvive(bytes);
    for (int first = 0; first < 256; ++first) {
        bytes = {static_cast<char>(first)};
        expectToSurvive(bytes);
        for (int second = 0; second < 256; ++second) {
            bytes = {static_cast<char>(first), static_cast<char>(second)};
            expectToSurvive(bytes);
            bytes += '\0';
            for (const char third : thirds) {
                bytes[2] = third;
                expectToSurvive(bytes);
            }
        }
    }
}

TEST(Utf8, KeepsRandomInputs) {
    // Mostly edges, so that valid and nearly valid sequences abound.
    std::mt19937 random(20240305);
    for (int round = 0; round < 200000; ++round) {
        std::string bytes(random() % 80, 'x');
        for (char& byte : bytes)
            if (random() % 4 != 0)
                byte = random() % 8 == 0 ? static_cast<char>(random() % 256)
                                         : edges[random() % edges.size()];
        expectToSurvive(bytes);
    }
}

TEST(Utf8, KeepsBytesAcrossCutsAndJoins) {
    const std::string_view bytes = "a\xE2\x82\xAC\xFF\xF0\x9F\x98\x80\x80"sv;
    for (std::size_t cut = 0; cut <= bytes.size(); ++cut)
        EXPECT_EQ(
            (OdString::fromNarrow(bytes.substr(0, cut)) + OdString::fromNarrow(bytes.substr(cut)))
                .toNarrow(),
            bytes)
            << cut;
}

TEST(Utf8, ReadsLongAsciiAroundOneOtherCharacterAtAnyPlace) {
    for (std::size_t length = 0; length <= 100; ++length)
        for (std::size_t at = 0; at <= length; ++at) {
            const std::string before(at, 'b');
            const std::string after(length - at, 'a');
            const OdString text = OdString::fromNarrow(before + "\xC3\xA9" + after);
            const std::wstring expected =
                std::wstring(at, L'b') + L'\xE9' + std::wstring(length - at, L'a');
            ASSERT_EQ(text.toWide(), expected) << length << " " << at;
            ASSERT_EQ(text.toNarrow(), before + "\xC3\xA9" + after) << length << " " << at;
        }
}

TEST(Utf8, IsTakenFromAPointer) {
    EXPECT_EQ(OdString("M\xC3\xBCll\xFF").toWide(), L"M\xFCll\xDCFF");
}

TEST(Utf8, OfMoreUnitsThanATextMayHaveIsRefused) {
#ifndef __OPTIMIZE__
    GTEST_SKIP() << "takes several seconds without optimisation";
#endif
    // Untouched pages of zeros: a text of 2^31 NULs that costs hardly any memory.
    const std::size_t size = std::size_t{1} << 31;
    void* pages =
        ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);

    EXPECT_THROW(OdString::fromNarrow({static_cast<const char*>(pages), size}), std::length_error);

    ::munmap(pages, size);
}

}  // namespace
