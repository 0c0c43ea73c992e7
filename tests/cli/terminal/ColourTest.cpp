#include <cli/terminal/Colour.h>

#include <gtest/gtest.h>

#include <string_view>

namespace {

using qrv::cli::Colour;
using qrv::cli::coloured;

// What a terminal sees is tested through the program, under script(1).
TEST(Colour, LeavesTextsAloneWhereTheOutputIsNoTerminal) {
    EXPECT_EQ(coloured(Colour::red, OdString(L"plan.dwg\n")), OdString(L"plan.dwg\n"));
    EXPECT_EQ(coloured(Colour::bold, OdString()), OdString(L""));
    EXPECT_EQ(coloured(Colour::cyan, std::string_view("\xE4")), "\xE4");
}

}  // namespace
