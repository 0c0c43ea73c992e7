#include <platform/kernel/OdDbHandle.h>

#include <gmock/gmock.h>

#include <limits>

namespace {

constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();

TEST(OdDbHandle, IsZeroByDefault) {
    EXPECT_EQ(OdDbHandle(), OdDbHandle(0));
    EXPECT_EQ(OdDbHandle().ascii(), OdString(L"0"));
}

TEST(OdDbHandle, WritesUpperCaseHexadecimalWithoutLeadingZeros) {
    const std::pair<std::uint64_t, const wchar_t*> cases[] = {
        {1, L"1"},
        {0xF, L"F"},
        {0x10, L"10"},
        {0x2ABC, L"2ABC"},
        {0x8000000000000000, L"8000000000000000"},
        {0x0123456789ABCDEF, L"123456789ABCDEF"},
        {largest, L"FFFFFFFFFFFFFFFF"},
    };
    for (const auto& [number, text] : cases)
        EXPECT_EQ(OdDbHandle(number).ascii(), OdString(text)) << number;
}

TEST(OdDbHandle, ReadsHexadecimal) {
    const std::pair<const wchar_t*, std::uint64_t> cases[] = {
        {L"0", 0},
        {L"2abc", 0x2ABC},
        {L"2ABC", 0x2ABC},
        {L"aBcDeF", 0xABCDEF},
        {L"00000000000000000000002A", 0x2A},
        {L"FFFFFFFFFFFFFFFF", largest},
        {L"10000000000000000", largest},
        {L"FFFFFFFFFFFFFFFFFFFFFFFFFFFF", largest},
        {L"1F,2", 0x1F},
        {L"1G", 1},
        {L"0x1F", 0},
        {L"", 0},
        {L"G", 0},
        {L" 1", 0},
        {L"-1", 0},
        {L"+1", 0},
        {L"\xFF11", 0},
    };
    for (const auto& [text, number] : cases)
        EXPECT_EQ(OdDbHandle(text), OdDbHandle(number)) << OdString(text).toNarrow();
}

TEST(OdDbHandle, StopsReadingAtANul) {
    EXPECT_EQ(OdDbHandle(OdString(std::wstring(L"1\0F", 3))), OdDbHandle(1));
}

TEST(OdDbHandle, TakesATextByAssignment) {
    OdDbHandle handle(7);

    handle = OdString(L"1F");

    EXPECT_EQ(handle.ascii(), OdString(L"1F"));
}

TEST(OdDbHandle, ReadsWhatItWrites) {
    for (int shift = 0; shift < 64; ++shift) {
        const OdDbHandle handle((std::uint64_t{1} << shift) - 1);
        EXPECT_EQ(OdDbHandle(handle.ascii()), handle) << shift;
    }
}

TEST(OdDbHandle, OrdersByNumberAndNotByText) {
    EXPECT_LT(OdDbHandle(0x9), OdDbHandle(0x10));
    EXPECT_LT(OdDbHandle(1), OdDbHandle(largest));
    EXPECT_FALSE(OdDbHandle(5) < OdDbHandle(5));
    EXPECT_NE(OdDbHandle(5), OdDbHandle(6));
}

}  // namespace
