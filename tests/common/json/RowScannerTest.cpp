#include <common/json/RowScannerInternal.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <utility>

namespace {

using common::RowScanner;

TEST(RowScanner, TakesATextTokenByToken) {
    RowScanner scanner(" { \"a\" : [ -7 ,true,\n\t\tfalse ] ,\"b\":\"\xC3\xA4\" }");
    scanner.expect('{');
    EXPECT_EQ(scanner.name(), "a");
    scanner.expect('[');
    EXPECT_EQ(scanner.integer(), -7);
    EXPECT_TRUE(scanner.take(','));
    EXPECT_TRUE(scanner.boolean());
    EXPECT_TRUE(scanner.take(','));
    EXPECT_FALSE(scanner.boolean());
    EXPECT_FALSE(scanner.take(','));
    scanner.expect(']');
    EXPECT_TRUE(scanner.take(','));
    EXPECT_EQ(scanner.name(), "b");
    EXPECT_EQ(scanner.string(), OdString(L"\u00E4"));
    scanner.expect('}');
}

TEST(RowScanner, UnderstandsStringsAsTheReaderDoes) {
    for (const auto& [json, text] : {
             std::pair{"\"\"", L""},
             std::pair{"\"a/b\"", L"a/b"},
             std::pair{"\"\\u00e4\\n\\\"\\\\\"", L"\u00E4\n\"\\"},
             std::pair{"\"\xF0\x9F\x93\x90\"", L"\xD83D\xDCD0"},
         })
        EXPECT_EQ(RowScanner(json).string(), OdString(text)) << json;
}

TEST(RowScanner, TakesEachIntegerOf64Bits) {
    EXPECT_EQ(RowScanner("-9223372036854775808").integer(),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(RowScanner("9223372036854775807").integer(),
              std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(RowScanner("0").integer(), 0);
    EXPECT_EQ(RowScanner("-0").integer(), 0);
}

TEST(RowScanner, LeavesWhatIsNotPlainToTheReader) {
    for (const char* const json : {"", "\"", "\"a", "\"\\", "\"\\q\"", "\"\\u12\"", "a"})
        EXPECT_THROW(RowScanner(json).string(), RowScanner::NotPlain) << json;
    for (const char* const json : {"", "-", "+1", "01", "-01", "9223372036854775808", "a"})
        EXPECT_THROW(RowScanner(json).integer(), RowScanner::NotPlain) << json;
    for (const char* const json : {"", "True", "tru", "null", "1"})
        EXPECT_THROW(RowScanner(json).boolean(), RowScanner::NotPlain) << json;
    for (const char* const json : {"", "a:", "\"a\"", "\"a\",", "{"})
        EXPECT_THROW(RowScanner(json).name(), RowScanner::NotPlain) << json;
    EXPECT_THROW(RowScanner("]").expect('['), RowScanner::NotPlain);
}

}  // namespace
