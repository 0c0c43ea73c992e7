#include <common/json/Reader.h>
#include <tests/common/json/JsonText.h>
#include <tests/common/json/Reference.h>
#include <tests/support/Effort.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace jsonlib::json {
namespace {

using qrv_test::ReferenceAnswer;
using qrv_test::shown;

ReferenceAnswer readByReader(const std::wstring& text) {
    try {
        return {qrv_test::readJson(text)};
    } catch (const std::length_error&) {
        return {std::nullopt, true};
    }
}

bool isSame(const ReferenceAnswer& left, const ReferenceAnswer& right) {
    return left.value == right.value && left.isEndless == right.isEndless;
}

/// The number of texts that were read as a value.
int expectSameForAll(const std::vector<std::wstring>& tokens, std::size_t length) {
    int accepted = 0;
    std::vector<std::size_t> choice(length, 0);
    for (;;) {
        std::wstring text;
        for (const std::size_t token : choice)
            text += tokens[token];
        const ReferenceAnswer expected = qrv_test::readByReference(text);
        EXPECT_TRUE(isSame(readByReader(text), expected)) << shown(text);
        accepted += expected.value.has_value();
        std::size_t place = 0;
        while (place < length && ++choice[place] == tokens.size())
            choice[place++] = 0;
        if (place == length)
            return accepted;
    }
}

std::vector<std::wstring> lettersOf(std::wstring_view letters) {
    std::vector<std::wstring> tokens;
    for (const wchar_t letter : letters)
        tokens.emplace_back(1, letter);
    return tokens;
}

TEST(ReaderBesideAReference, AgreesOnAllShortTextsOfBracketsAndNumbers) {
    for (std::size_t length = 1; length <= 5; ++length)
        EXPECT_GT(expectSameForAll(lettersOf(L"[]{},: 1\""), length), 0);
}

TEST(ReaderBesideAReference, AgreesOnAllShortNumbers) {
    for (std::size_t length = 1; length <= 5; ++length)
        EXPECT_GT(expectSameForAll(lettersOf(L"012-+.eE,"), length), 0);
}

TEST(ReaderBesideAReference, AgreesOnAllShortStrings) {
    for (std::size_t length = 1; length <= 5; ++length)
        EXPECT_GT(expectSameForAll(lettersOf(L"\"\\un/a1"), length), 0);
}

TEST(ReaderBesideAReference, AgreesOnAllShortSequencesOfTokens) {
    const std::vector<std::wstring> tokens = {L"[", L"]",     L"{",       L"}",    L",",
                                              L":", L"\"a\"", L"\"b\":1", L"null", L"-0"};
    for (std::size_t length = 1; length <= 5; ++length)
        EXPECT_GT(expectSameForAll(tokens, length), 0);
}

// Symptom: `{"a" "b` and `[1 "b` were told as syntax errors, though their last string has no end.
// Cause: what the grammar would not take was refused by its first character, not as a whole token.
TEST(ReaderBesideAReference, AgreesOnAllShortSequencesThatEndInAnOpenString) {
    const std::vector<std::wstring> tokens = {L"[",     L"]",   L"{",    L"}", L",",  L":",
                                              L"\"a\"", L"tru", L"true", L"1", L"\"", L"\"b\\"};
    for (std::size_t length = 1; length <= 4; ++length)
        EXPECT_GT(expectSameForAll(tokens, length), 0);
}

TEST(ReaderBesideAReference, AgreesOnDamagedDocuments) {
    const std::wstring document =
        L"{\"head\" : {\"reference\" : \"master\"}, \"index\" : [{\"path\" : \"a\\u00e9\\n\","
        L" \"data\" : {\"last_checked\" : -17.5e2, \"modified\" : false}}, null, 0]}";
    const std::wstring letters = L"[]{},:\"\\u0-.e tfn";
    std::mt19937_64 random(20240305);
    int accepted = 0;
    constexpr int rounds = 20'000;
    for (int round = 0; round < rounds; ++round) {
        std::wstring text = document;
        for (std::uint64_t change = random() % 3; change < 3; ++change) {
            const std::size_t place = random() % text.size();
            const wchar_t letter = letters[random() % letters.size()];
            if (random() % 2 == 0)
                text[place] = letter;
            else
                text.erase(place, random() % 3);
        }
        const ReferenceAnswer expected = qrv_test::readByReference(text);
        ASSERT_TRUE(isSame(readByReader(text), expected)) << shown(text);
        accepted += expected.value.has_value();
    }
    EXPECT_GT(accepted, 1'000);
    qrv_test::tellTried(std::size_t{rounds}, "damaged inputs");
}

}  // namespace
}  // namespace jsonlib::json
