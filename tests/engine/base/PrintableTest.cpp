#include <engine/base/Printable.h>

#include <gtest/gtest.h>

#include <string>

namespace {

struct Case {
    std::string bytes;
    std::string shown;
};

TEST(Printable, ShowsWhatCouldSteerATerminalAsAnEscape) {
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
        {"nothing \u200B\uFEFF\u00AD\u2060", "nothing \\u200B\\uFEFF\\u00AD\\u2060"},
        {"fillers \u3164\u115F", "fillers \\u3164\\u115F"},
        {"joined a\u200Db, at the end ä\u200C", "joined a\\u200Db, at the end ä\\u200C"},
        {"spelling \u0645\u06CC\u200C\u062E, picture \U0001F469\u200D\U0001F467",
         "spelling \u0645\u06CC\u200C\u062E, picture \U0001F469\u200D\U0001F467"},
        {"", ""},
    };
    for (const Case& each : cases)
        EXPECT_EQ(qrv::printable(OdString::fromNarrow(each.bytes)).toNarrow(), each.shown)
            << each.bytes;
}

TEST(Printable, ShowsASurrogateThatStandsForNothingAsItsNumber) {
    EXPECT_EQ(qrv::printable(L"a\xD83D"
                             L"b\xDC00")
                  .toNarrow(),
              "a\\uD83Db\\uDC00");
    EXPECT_EQ(qrv::printable(L"\xD83D").toNarrow(), "\\uD83D");
}

TEST(Printable, CallsATextHarmlessThatIsOnlyPartlyInvisible) {
    for (const char* const text : {"", "plan.dwg", "\U0001F4D0", "a\u200Bb", "\u3164"})
        EXPECT_TRUE(qrv::isHarmless(OdString::fromNarrow(text))) << text;
    for (const char* const text : {"\x1B", "a\nb", "\xFF", "\u202E", "\u2028"})
        EXPECT_FALSE(qrv::isHarmless(OdString::fromNarrow(text))) << text;
}

TEST(Printable, KeepsANulInsideAName) {
    EXPECT_EQ(qrv::printable(OdString::fromNarrow(std::string("a\0b", 3))).toNarrow(), "a\\x00b");
}

}  // namespace
