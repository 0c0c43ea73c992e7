#include <platform/kernel/OdString.h>

#include <gmock/gmock.h>

#include <climits>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <utility>

namespace {

OdString units(std::initializer_list<wchar_t> list) {
    return OdString(std::wstring(list));
}

TEST(OdString, IsEmptyByDefault) {
    const OdString text;

    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(text.getLength(), 0);
    EXPECT_EQ(text.c_str()[0], L'\0');
    EXPECT_EQ(text[0], L'\0');
    EXPECT_EQ(text, OdString(L""));
}

TEST(OdString, TakesANullPointerAsTheEmptyText) {
    const wchar_t* wide = nullptr;
    const char* narrow = nullptr;

    EXPECT_EQ(OdString(wide), OdString());
    EXPECT_EQ(OdString(narrow), OdString());
}

TEST(OdString, CountsUnits) {
    EXPECT_EQ(OdString(L"abc").getLength(), 3);
    EXPECT_EQ(OdString(L"\u00E9").getLength(), 1);
    EXPECT_EQ(OdString(L"\U0001F600").getLength(), 2);
    EXPECT_FALSE(OdString(L"a").isEmpty());
}

TEST(OdString, SplitsCharactersAbove0xFFFFOnEveryWayIn) {
    const std::wstring pair = L"a\xD83D\xDE00z";
    OdString appended(L"a");
    appended += wchar_t{0x1F600};

    EXPECT_EQ(OdString(L"a\U0001F600z").toWide(), pair);
    EXPECT_EQ(OdString(std::wstring(L"a\U0001F600z")).toWide(), pair);
    EXPECT_EQ(OdString("a\xF0\x9F\x98\x80z").toWide(), pair);
    EXPECT_EQ(OdString::fromNarrow("a\xF0\x9F\x98\x80z").toWide(), pair);
    EXPECT_EQ((appended + L'z').toWide(), pair);
    EXPECT_EQ((OdString(L"a") + wchar_t{0x1F600} + L"z").toWide(), pair);
}

TEST(OdString, SplitsAtTheEdgesOfThePlanes) {
    const std::pair<wchar_t, std::wstring> cases[] = {
        {wchar_t{0xFFFF}, L"\xFFFF"},         {wchar_t{0x10000}, L"\xD800\xDC00"},
        {wchar_t{0x103FF}, L"\xD800\xDFFF"},  {wchar_t{0x10400}, L"\xD801\xDC00"},
        {wchar_t{0x10FFFF}, L"\xDBFF\xDFFF"},
    };
    for (const auto& [character, expected] : cases)
        EXPECT_EQ(OdString(std::wstring(1, character)).toWide(), expected) << int{character};
}

TEST(OdString, ReplacesWhatIsNoCodePoint) {
    for (const wchar_t character : {wchar_t{0x110000}, std::numeric_limits<wchar_t>::max(),
                                    std::numeric_limits<wchar_t>::min(), wchar_t{-1}})
        EXPECT_EQ(OdString(std::wstring{L'a', character, L'b'}).toWide(),
                  L"a\xFFFD"
                  L"b")
            << int{character};
}

TEST(OdString, KeepsPairsAndLoneSurrogatesAsTheyCome) {
    for (const std::wstring text : {L"\xD83D\xDE00", L"\xD83D", L"\xDE00", L"\xDE00\xD83D",
                                    L"\xD83D\xD83D\xDE00", L"\xDC80", L"a\xDFFF"})
        EXPECT_EQ(OdString(text).toWide(), text);
}

TEST(OdString, KeepsNuls) {
    const std::wstring wide(L"a\0b\0", 4);
    const OdString text(wide);

    EXPECT_EQ(text.getLength(), 4);
    EXPECT_EQ(text.toWide(), wide);
    EXPECT_EQ(text[1], L'\0');
    EXPECT_EQ(text[2], L'b');
    EXPECT_EQ(text[4], L'\0');
    EXPECT_NE(text, OdString(L"a"));
    EXPECT_EQ((OdString(L"x") + text + text).toWide(), std::wstring(L"xa\0b\0a\0b\0", 9));
    EXPECT_EQ((OdString(L"a") + L'\0' + L"b" + L'\0'), text);
}

TEST(OdString, EndsPointersAtTheFirstNul) {
    EXPECT_EQ(OdString(L"a\0b"), OdString(L"a"));
    EXPECT_EQ(OdString("a\0b"), OdString(L"a"));
}

TEST(OdString, AppendsToItself) {
    OdString text(L"ab");

    text += text;
    text += text;

    EXPECT_EQ(text, OdString(L"abababab"));
}

TEST(OdString, AddsWithoutChangingItsOperands) {
    const OdString left(L"left");
    const OdString right(L"right");

    EXPECT_EQ(left + right, OdString(L"leftright"));
    EXPECT_EQ(L"<" + left + L">", OdString(L"<left>"));
    EXPECT_EQ(left, OdString(L"left"));
    EXPECT_EQ(right, OdString(L"right"));
}

TEST(OdString, OrdersByCodeUnits) {
    // By code points, U+FFFF would come before U+10000.
    const OdString ascending[] = {
        OdString(),
        OdString(std::wstring(1, L'\0')),
        L"A",
        L"AB",
        L"B",
        L"a",
        L"a\u0001",
        L"\u00E9",
        OdString(std::wstring(L"\xD7FF")),
        L"\U00010000",
        units({0xDC80}),
        L"\uE000",
        L"\xFFFF",
    };
    for (std::size_t i = 0; i < std::size(ascending); ++i)
        for (std::size_t k = 0; k < std::size(ascending); ++k) {
            EXPECT_EQ(ascending[i] < ascending[k], i < k) << i << " " << k;
            EXPECT_EQ(ascending[i] == ascending[k], i == k) << i << " " << k;
        }
}

TEST(OdString, IsAMapKey) {
    const std::map<OdString, int> map = {{L"b", 2}, {L"a", 1}, {L"B", 3}};

    EXPECT_EQ(map.begin()->first, OdString(L"B"));
    EXPECT_EQ(map.at(L"a"), 1);
}

TEST(OdString, CutsFromTheLeft) {
    const OdString text(L"abcd");
    const std::pair<int, const wchar_t*> cases[] = {
        {INT_MIN, L""}, {-1, L""},    {0, L""},     {1, L"a"},
        {3, L"abc"},    {4, L"abcd"}, {5, L"abcd"}, {INT_MAX, L"abcd"},
    };
    for (const auto& [count, expected] : cases)
        EXPECT_EQ(text.left(count), OdString(expected)) << count;
}

TEST(OdString, CutsFromTheRight) {
    const OdString text(L"abcd");
    const std::pair<int, const wchar_t*> cases[] = {
        {INT_MIN, L""}, {-1, L""},    {0, L""},     {1, L"d"},
        {3, L"bcd"},    {4, L"abcd"}, {5, L"abcd"}, {INT_MAX, L"abcd"},
    };
    for (const auto& [count, expected] : cases)
        EXPECT_EQ(text.right(count), OdString(expected)) << count;
}

TEST(OdString, CutsFromAPositionToTheEnd) {
    const OdString text(L"abcd");
    const std::pair<int, const wchar_t*> cases[] = {
        {INT_MIN, L"abcd"}, {-1, L"abcd"}, {0, L"abcd"}, {1, L"bcd"},
        {3, L"d"},          {4, L""},      {5, L""},     {INT_MAX, L""},
    };
    for (const auto& [first, expected] : cases)
        EXPECT_EQ(text.mid(first), OdString(expected)) << first;
}

TEST(OdString, CutsFromTheMiddle) {
    const OdString text(L"abcd");
    const std::tuple<int, int, const wchar_t*> cases[] = {
        {0, 0, L""},    {0, 2, L"ab"},      {1, 2, L"bc"},  {1, 3, L"bcd"},
        {1, 4, L"bcd"}, {3, INT_MAX, L"d"}, {4, 1, L""},    {INT_MAX, INT_MAX, L""},
        {1, -1, L""},   {1, INT_MIN, L""},  {-1, 2, L"ab"}, {INT_MIN, INT_MAX, L"abcd"},
    };
    for (const auto& [first, count, expected] : cases)
        EXPECT_EQ(text.mid(first, count), OdString(expected)) << first << " " << count;
}

TEST(OdString, CutsBetweenTheUnitsOfAPair) {
    const OdString text(L"\U0001F600");

    EXPECT_EQ(text.left(1), units({0xD83D}));
    EXPECT_EQ(text.right(1), units({0xDE00}));
    EXPECT_EQ(text.left(1) + text.right(1), text);
}

TEST(OdString, FindsUnits) {
    const OdString text(std::wstring(L"a#b#\0c", 6));
    const std::tuple<wchar_t, int, int> cases[] = {
        {L'a', 0, 0},  {L'#', 0, 1},  {L'#', 1, 1},       {L'#', 2, 3},        {L'#', 4, -1},
        {L'x', 0, -1}, {L'c', 0, 5},  {L'c', 6, -1},      {L'c', INT_MAX, -1}, {L'\0', 0, 4},
        {L'A', 0, -1}, {L'a', -1, 0}, {L'a', INT_MIN, 0}, {L'a', 1, -1},
    };
    for (const auto& [unit, start, expected] : cases)
        EXPECT_EQ(text.find(unit, start), expected) << int{unit} << " from " << start;
    EXPECT_EQ(text.find(L'#'), 1);
}

TEST(OdString, FindsTexts) {
    const OdString text(L"abcabc");
    const std::tuple<const wchar_t*, int, int> cases[] = {
        {L"abc", 0, 0},      {L"abc", 1, 3},    {L"abc", 3, 3},      {L"abc", 4, -1},
        {L"bca", 0, 1},      {L"abcabc", 0, 0}, {L"abcabcd", 0, -1}, {L"ABC", 0, -1},
        {L"c", -5, 2},       {L"", 0, 0},       {L"", 6, 6},         {L"", 7, -1},
        {L"c", INT_MAX, -1},
    };
    for (const auto& [part, start, expected] : cases)
        EXPECT_EQ(text.find(OdString(part), start), expected)
            << OdString(part).toNarrow() << " from " << start;
    EXPECT_EQ(text.find(OdString(L"bc")), 1);
}

TEST(OdString, FindsTheLastUnit) {
    const OdString text(L"tf:a#b#12");

    EXPECT_EQ(text.reverseFind(L'#'), 6);
    EXPECT_EQ(text.reverseFind(L't'), 0);
    EXPECT_EQ(text.reverseFind(L'2'), 8);
    EXPECT_EQ(text.reverseFind(L'x'), -1);
    EXPECT_EQ(OdString().reverseFind(L'x'), -1);
}

TEST(OdString, ChangesLetterCaseWhateverTheLocale) {
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> cases[] = {
        {L"", L"", L""},
        {L"Plan-1.DWG", L"plan-1.dwg", L"PLAN-1.DWG"},
        {L"IiI", L"iii", L"III"},
        {L"\u00C4\u00E9\u00D1", L"\u00E4\u00E9\u00F1", L"\u00C4\u00C9\u00D1"},
        {L"\u0416\u03A9", L"\u0436\u03C9", L"\u0416\u03A9"},
        {L"\u01C5", L"\u01C6", L"\u01C4"},
        // No single character on the other side.
        {L"\u00DF\u0149", L"\u00DF\u0149", L"\u00DF\u0149"},
        {L"\u0130", L"\u0130", L"\u0130"},
        // From the second plane.
        {L"a\U00010400\U00010428Z", L"a\U00010428\U00010428z", L"A\U00010400\U00010400Z"},
    };
    for (const auto& [text, lower, upper] : cases) {
        EXPECT_EQ(OdString(text).makeLower(), OdString(lower)) << OdString(text).toNarrow();
        EXPECT_EQ(OdString(text).makeUpper(), OdString(upper)) << OdString(text).toNarrow();
    }
}

TEST(OdString, ChangesLetterCaseInPlace) {
    OdString text(L"Ab");

    EXPECT_EQ(&text.makeLower(), &text);
    EXPECT_EQ(text, OdString(L"ab"));
    EXPECT_EQ(&text.makeUpper(), &text);
    EXPECT_EQ(text, OdString(L"AB"));
}

TEST(OdString, KeepsTheLengthOfEveryCharacterInOtherCase) {
    for (int character = 0; character <= 0x10FFFF; ++character) {
        const OdString text(std::wstring{static_cast<wchar_t>(character), L'|'});
        const OdString lower = OdString(text).makeLower();
        const OdString upper = OdString(text).makeUpper();
        ASSERT_EQ(lower.getLength(), text.getLength()) << character;
        ASSERT_EQ(upper.getLength(), text.getLength()) << character;
        ASSERT_EQ(lower.right(1), OdString(L"|")) << character;
        ASSERT_EQ(upper.right(1), OdString(L"|")) << character;
    }
}

TEST(OdString, KeepsNulsAndLoneSurrogatesInOtherCase) {
    EXPECT_EQ(units({L'A', 0, 0xD801, L'B', 0xDC00, 0xD801}).makeLower(),
              units({L'a', 0, 0xD801, L'b', 0xDC00, 0xD801}));
}

TEST(OdString, ComparesWithoutRegardToLetterCase) {
    const std::tuple<OdString, OdString, int> cases[] = {
        {L"", L"", 0},
        {L"Plan", L"pLAN", 0},
        {L"\u00C4\U00010400", L"\u00E4\U00010428", 0},
        {L"a", L"B", -1},
        {L"A", L"b", -1},
        {L"abc", L"AB", 1},
        {L"", L"a", -1},
        // By lower case, the underscore comes before the letters; by upper case, after them.
        {L"_", L"Z", -1},
        {units({L'a', 0, L'B'}), units({L'A', 0, L'b'}), 0},
        {units({L'a', 0, L'b'}), L"a", 1},
        // By code units, as everywhere.
        {L"\U00010000", L"\uE000", -1},
    };
    for (const auto& [left, right, expected] : cases) {
        const int result = left.iCompare(right);
        const int reversed = right.iCompare(left);
        EXPECT_EQ((result > 0) - (result < 0), expected)
            << left.toNarrow() << " to " << right.toNarrow();
        EXPECT_EQ((reversed > 0) - (reversed < 0), -expected)
            << right.toNarrow() << " to " << left.toNarrow();
    }
}

TEST(OdString, LeavesBothSidesAsTheyAreWhenComparing) {
    const OdString left(L"Plan");
    const OdString right(L"PLAN");

    EXPECT_EQ(left.iCompare(right), 0);

    EXPECT_EQ(left, OdString(L"Plan"));
    EXPECT_EQ(right, OdString(L"PLAN"));
}

TEST(OdString, TakesAWideTextWithoutCopyingIt) {
    std::wstring wide(1000, L'x');
    const wchar_t* characters = wide.data();

    const OdString text(std::move(wide));

    EXPECT_EQ(text.c_str(), characters);
}

}  // namespace
