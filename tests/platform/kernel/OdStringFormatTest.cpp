#include <platform/kernel/OdString.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <string>

namespace {

OdString withNul(const wchar_t* before, const wchar_t* after) {
    return OdString(before) + L'\0' + OdString(after);
}

TEST(OdStringFormat, InsertsTextsAndIntegersInOrder) {
    EXPECT_EQ(OdString::format(L"Line %i of \"%ls\": %ls", 12, OdString(L"ignore"), L"bad"),
              OdString(L"Line 12 of \"ignore\": bad"));
}

TEST(OdStringFormat, TakesEveryKindOfText) {
    const std::wstring wide(L"wide");
    const wchar_t* const none = nullptr;

    EXPECT_EQ(
        OdString::format(L"%ls|%ls|%ls|%ls|%ls", OdString(L"text"), wide, L"literal", "utf", none),
        OdString(L"text|wide|literal|utf|"));
}

TEST(OdStringFormat, TakesEveryKindOfInteger) {
    EXPECT_EQ(OdString::format(L"%i %i %i %i", short{-3}, 4U, 5L, std::size_t{6}),
              OdString(L"-3 4 5 6"));
    EXPECT_EQ(OdString::format(L"%i", std::numeric_limits<std::int64_t>::min()),
              OdString(L"-9223372036854775808"));
    EXPECT_EQ(OdString::format(L"%i", std::numeric_limits<std::int64_t>::max()),
              OdString(L"9223372036854775807"));
    EXPECT_EQ(OdString::format(L"%i", std::numeric_limits<std::uint64_t>::max()),
              OdString(L"18446744073709551615"));
}

TEST(OdStringFormat, WritesNumbersWithoutGrouping) {
    EXPECT_EQ(OdString::format(L"%i", 1234567), OdString(L"1234567"));
}

TEST(OdStringFormat, KeepsAPatternWithoutPlaceholders) {
    EXPECT_EQ(OdString::format(L""), OdString());
    EXPECT_EQ(OdString::format(L"M\u00FCll \U0001F600"), OdString(L"M\u00FCll \U0001F600"));
    EXPECT_EQ(OdString::format(withNul(L"a", L"b")), withNul(L"a", L"b"));
}

/// Each pattern is filled with one text, "T", and then one integer, 7.
TEST(OdStringFormat, SurvivesHostilePatterns) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"%ls %i", L"T 7"},
        {L"%ls%i", L"T7"},
        // Surplus arguments.
        {L"", L""},
        {L"%ls", L"T"},
        // Missing arguments.
        {L"%ls %i %ls %i", L"T 7 %ls %i"},
        // The wrong kind: written as it stands, and the argument is used up.
        {L"%i", L"%i"},
        {L"%i %i", L"%i 7"},
        {L"%i %ls", L"%i %ls"},
        {L"%ls %ls", L"T %ls"},
        // Percent signs.
        {L"%%", L"%"},
        {L"%%%%", L"%%"},
        {L"%%ls %ls", L"%ls T"},
        {L"%%%ls", L"%T"},
        {L"%ls%%", L"T%"},
        {L"%", L"%"},
        {L"%ls%", L"T%"},
        {L"100 % %ls", L"100 % T"},
        // What is known elsewhere and not here uses up no argument.
        {L"%l", L"%l"},
        {L"%l %ls", L"%l T"},
        {L"%l%ls", L"%lT"},
        {L"%s %ls", L"%s T"},
        {L"%n %ls", L"%n T"},
        {L"%d %x %p %c %S %ld %lls %hs %ls", L"%d %x %p %c %S %ld %lls %hs T"},
        {L"%1$ls %ls", L"%1$ls T"},
        {L"%*i %ls", L"%*i T"},
        {L"%10ls %.3ls %-5i %ls", L"%10ls %.3ls %-5i T"},
        {L"%LS %Ls %I %ls", L"%LS %Ls %I T"},
        {L"% ls %ls", L"% ls T"},
        {L"\uFF05ls %ls", L"\uFF05ls T"},
        // A placeholder ends where its letters end.
        {L"%lss %ii", L"Ts 7i"},
    };
    for (const auto& [pattern, expected] : cases)
        EXPECT_EQ(OdString::format(pattern, L"T", 7), OdString(expected))
            << OdString(pattern).toNarrow();
}

TEST(OdStringFormat, ReadsNoPlaceholdersInArguments) {
    EXPECT_EQ(OdString::format(L"%ls|%ls", L"%ls%i%%%n", L"x"), OdString(L"%ls%i%%%n|x"));
    EXPECT_EQ(OdString::format(L"%%%ls", L"ls"), OdString(L"%ls"));
    EXPECT_EQ(OdString::format(L"%ls%ls%ls", L"%", L"l", L"s"), OdString(L"%ls"));
}

TEST(OdStringFormat, KeepsNulsInPatternsAndArguments) {
    const std::wstring wide(L"y\0z", 3);

    EXPECT_EQ(OdString::format(withNul(L"<", L"%ls%ls>"), withNul(L"a", L"b"), wide),
              withNul(L"<", L"a") + withNul(L"", L"by") + withNul(L"", L"z>"));
}

TEST(OdStringFormat, KeepsSurrogatesInArguments) {
    const OdString lone(std::wstring(1, wchar_t{0xD800}));
    const OdString byteUnit = OdString::fromNarrow("\xFF");

    EXPECT_EQ(OdString::format(L"%ls%ls", lone, byteUnit).toWide(), L"\xD800\xDCFF");
    EXPECT_EQ(OdString::format(L"%ls", byteUnit).toNarrow(), "\xFF");
}

TEST(OdStringFormat, SplitsWideCharactersOfArguments) {
    EXPECT_EQ(OdString::format(L"%ls", std::wstring(L"\U0001F600")).toWide(), L"\xD83D\xDE00");
}

TEST(OdStringFormat, EndsInTimeOnAMillionPercentSigns) {
    constexpr std::size_t count = 1000000;

    EXPECT_EQ(OdString::format(std::wstring(count, L'%'), L"T"),
              OdString(std::wstring(count / 2, L'%')));
}

TEST(OdStringFormat, EndsInTimeOnAMillionPlaceholders) {
    std::wstring pattern;
    for (int i = 0; i < 1000000; ++i)
        pattern += L"%ls";

    EXPECT_EQ(OdString::format(pattern, L"T"), OdString(L'T' + pattern.substr(3)));
}

}  // namespace
