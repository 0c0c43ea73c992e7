#include <engine/base/Hex.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using qrv::fromHex;
using qrv::toHex;

TEST(Hex, HasTwoLowerCaseDigitsForEachByte) {
    EXPECT_EQ(toHex(""), "");
    EXPECT_EQ(toHex(std::string("\x00\x0f\xa5\xff", 4)), "000fa5ff");
}

TEST(Hex, GivesBackTheBytes) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    EXPECT_EQ(fromHex(toHex(bytes)), bytes);
}

TEST(Hex, KnowsNoOtherForm) {
    for (const char* const text : {"0", "000", "0F", "0g", "g0", "0/", ":0", "0x00", " 00", "00 "})
        EXPECT_EQ(fromHex(text), "") << text;
}

}  // namespace
