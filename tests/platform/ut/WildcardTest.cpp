#include <platform/ut/WildcardInternal.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

struct Case {
    const wchar_t* pattern;
    const wchar_t* name;
};

TEST(Wildcard, Matches) {
    const Case cases[] = {
        {L"", L""},        {L"*", L""},          {L"*", L"anything"},   {L"a", L"a"},
        {L"?", L"a"},      {L"a?c", L"abc"},     {L"*.dwg", L"a.dwg"},  {L"*.dwg", L".dwg"},
        {L"a*", L"a"},     {L"a*b*c", L"aXbYc"}, {L"*ab", L"aab"},      {L"*a*b", L"ababb"},
        {L"**", L"x"},     {L"[a]", L"[a]"},     {L"a\\*", L"a\\name"}, {L"?*", L"x"},
        {L"*??", L"abcd"}, {L"*.b?k", L"a.bak"}, {L"*\n*", L"a\nb"},    {L".*", L".hidden"},
    };
    for (const Case& entry : cases)
        EXPECT_TRUE(ut::matchesWildcards(entry.name, entry.pattern))
            << OdString(entry.pattern).toNarrow() << " on " << OdString(entry.name).toNarrow();
}

TEST(Wildcard, DoesNotMatch) {
    const Case cases[] = {
        {L"", L"a"},        {L"?", L""},         {L"?", L"ab"},    {L"a", L"A"},
        {L"*.dwg", L"dwg"}, {L"*.dwg", L"a.dw"}, {L"a*b", L"abc"}, {L"*.dwg", L"a.dwgx"},
        {L"[ab]", L"a"},    {L"a*c", L"ab"},     {L"?*", L""},     {L"a\\*", L"a*"},
    };
    for (const Case& entry : cases)
        EXPECT_FALSE(ut::matchesWildcards(entry.name, entry.pattern))
            << OdString(entry.pattern).toNarrow() << " on " << OdString(entry.name).toNarrow();
}

// The plain definition, to compare with; the recursion ends after the few characters of a short
// pattern.
bool matchesByDefinition(std::wstring_view name, std::wstring_view pattern) {
    if (pattern.empty())
        return name.empty();
    if (pattern[0] == L'*')
        return matchesByDefinition(name, pattern.substr(1)) ||
               (!name.empty() && matchesByDefinition(name.substr(1), pattern));
    return !name.empty() && (pattern[0] == L'?' || pattern[0] == name[0]) &&
           matchesByDefinition(name.substr(1), pattern.substr(1));
}

std::vector<std::wstring> allTexts(const std::wstring& letters, std::size_t longest) {
    std::vector<std::wstring> texts = {L""};
    for (std::size_t begin = 0; texts[begin].size() < longest; ++begin) {
        for (const wchar_t letter : letters)
            texts.push_back(texts[begin] + letter);
    }
    return texts;
}

TEST(Wildcard, AgreesWithItsDefinitionOnAllShortInputs) {
    const std::vector<std::wstring> names = allTexts(L"ab", 5);
    for (const std::wstring& pattern : allTexts(L"ab*?", 5)) {
        for (const std::wstring& name : names)
            ASSERT_EQ(ut::matchesWildcards(name, pattern), matchesByDefinition(name, pattern))
                << OdString(pattern).toNarrow() << " on " << OdString(name).toNarrow();
    }
}

TEST(Wildcard, EndsSoonOnAHostilePattern) {
    std::wstring pattern;
    for (int star = 0; star < 60; ++star)
        pattern += L"*a";
    EXPECT_FALSE(ut::matchesWildcards(std::wstring(5000, L'a'), pattern + L"b"));
    EXPECT_TRUE(ut::matchesWildcards(std::wstring(5000, L'a') + L"b", pattern + L"b"));
}

}  // namespace
