#include <engine/paths/RelativePath.h>

#include <gmock/gmock.h>

#include <string_view>

namespace {

using qrv::isPortable;
using namespace std::string_view_literals;

TEST(IsPortable, IsTrueOfWhatWindowsHolds) {
    for (const std::string_view path : {
             "plan.dwg"sv,
             "a/b c/.hidden"sv,
             "auxiliary.dwg"sv,
             "com.dwg"sv,
             "com10"sv,
             "lpt"sv,
             "console"sv,
             "xcon"sv,
             "Übersicht"sv,
             "com\xC2\xB4"sv,
         })
        EXPECT_TRUE(isPortable(path)) << path;
}

TEST(IsPortable, IsFalseOfDevicesWhateverTheirExtensionOrCase) {
    for (const std::string_view path : {
             "con"sv,
             "CON.dwg"sv,
             "a/aux.tar.gz"sv,
             "nul/b"sv,
             "Prn"sv,
             "con .txt"sv,
             "conin$"sv,
             "CONOUT$.x"sv,
             "COM1.dxf"sv,
             "com0"sv,
             "lpt9"sv,
             "com\xC2\xB9"sv,
             "LPT\xC2\xB3.x"sv,
         })
        EXPECT_FALSE(isPortable(path)) << path;
}

TEST(IsPortable, IsFalseOfNamesWithForbiddenCharactersOrEnds) {
    for (const std::string_view path : {
             "a."sv,
             "a "sv,
             "a /b"sv,
             "a<b"sv,
             "a>b"sv,
             "a\"b"sv,
             "a|b"sv,
             "a?b"sv,
             "a*b"sv,
             "a:b"sv,
             "a\\b"sv,
             "line\nfeed"sv,
             "\x1F"sv,
             "a//b"sv,
         })
        EXPECT_FALSE(isPortable(path)) << path;
}

}  // namespace
