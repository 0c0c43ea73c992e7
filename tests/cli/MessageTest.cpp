#include <cli/Message.h>

#include <gtest/gtest.h>

#include <string>

namespace {

struct Case {
    std::string bytes;
    std::string shown;
};

TEST(Message, ShowsWhatCouldSteerATerminalAsAnEscape) {
    const Case cases[] = {
        {"plans/ground floor.dxf", "plans/ground floor.dxf"},
        {"Gehäuse \u00A0 \U0001F4D0", "Gehäuse \u00A0 \U0001F4D0"},
        {"back\\slash", "back\\slash"},
        {"\x1B[31mred", "\\x1B[31mred"},
        {"two\nlines\tand\ra tab", "two\\x0Alines\\x09and\\x0Da tab"},
        {"delete\x7F", "delete\\x7F"},
        {"next line \u0085, control \u009B", "next line \\u0085, control \\u009B"},
        {"not UTF-8 \xFF\x9B", "not UTF-8 \\xFF\\x9B"},
        {"half a pair \xED\xA0\xBD", "half a pair \\xED\\xA0\\xBD"},
        {"right to left \u202Efxd.exe", "right to left \\u202Efxd.exe"},
        {"isolate \u2066\u2069 mark \u200F\u061C", "isolate \\u2066\\u2069 mark \\u200F\\u061C"},
        {"separators \u2028\u2029", "separators \\u2028\\u2029"},
        {"", ""},
    };
    for (const Case& each : cases)
        EXPECT_EQ(qrv_cli::printable(OdString::fromNarrow(each.bytes)).toNarrow(), each.shown)
            << each.bytes;
}

TEST(Message, ShowsASurrogateThatStandsForNothingAsItsNumber) {
    EXPECT_EQ(qrv_cli::printable(L"a\xD83D"
                                 L"b\xDC00")
                  .toNarrow(),
              "a\\uD83Db\\uDC00");
    EXPECT_EQ(qrv_cli::printable(L"\xD83D").toNarrow(), "\\uD83D");
}

TEST(Message, KeepsANulInsideAName) {
    EXPECT_EQ(qrv_cli::printable(OdString::fromNarrow(std::string("a\0b", 3))).toNarrow(),
              "a\\x00b");
}

TEST(Message, IsPrintedAsOneLine) {
    testing::internal::CaptureStderr();
    qrv_cli::printMessage(L"Error:\tone\ntwo \x1B[2J");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "qrv: Error: one; two \\x1B[2J\n");
}

}  // namespace
