#include <engine/diff/Lines.h>

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace std::string_literals;
using qrv::isText;
using qrv::Lines;

std::vector<std::string_view> linesOf(std::string_view text) {
    const Lines lines(text);
    std::vector<std::string_view> list;
    for (std::size_t index = 0; index < lines.size(); ++index)
        list.push_back(lines[index]);
    return list;
}

TEST(Lines, KeepTheirEnds) {
    EXPECT_THAT(linesOf("one\ntwo\r\n\nthree\n"),
                testing::ElementsAre("one\n", "two\r\n", "\n", "three\n"));
}

TEST(Lines, MayLackTheLastEnd) {
    EXPECT_THAT(linesOf("one\ntwo"), testing::ElementsAre("one\n", "two"));
}

TEST(Lines, AreNoneInAnEmptyText) {
    EXPECT_THAT(linesOf(""), testing::IsEmpty());
}

TEST(Lines, CountACarriageReturnAndANulAsCharacters) {
    EXPECT_THAT(linesOf("a\rb\0c"s), testing::ElementsAre("a\rb\0c"s));
}

TEST(IsText, TakesUtf8) {
    const std::vector<std::string> texts = {"",
                                            "plain\n",
                                            "Übergabe\n",
                                            "\xE2\x82\xAC",
                                            "\xF0\x9F\x93\x90",
                                            "\x1B[31m",
                                            "\xEF\xBB\xBFwith a mark",
                                            "\xF4\x8F\xBF\xBF"};
    for (const std::string& text : texts)
        EXPECT_TRUE(isText(text)) << text;
}

TEST(IsText, TakesEncodingsOfOldPrograms) {
    EXPECT_TRUE(
        isText("\xFC"
               "bergabe \x80\r\n"));
}

TEST(IsText, RefusesANul) {
    EXPECT_FALSE(isText("a\0b"s));
    EXPECT_FALSE(
        isText("\xFF\xFE"
               "a\0"s));
}

TEST(IsText, LooksForANulOnlyNearTheBeginning) {
    EXPECT_FALSE(isText(std::string(7999, 'a') + '\0'));
    EXPECT_TRUE(isText(std::string(8000, 'a') + '\0'));
}

}  // namespace
