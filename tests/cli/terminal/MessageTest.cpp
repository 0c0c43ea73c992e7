#include <cli/terminal/Message.h>

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Message, IsPrintedAsOneLine) {
    testing::internal::CaptureStderr();
    qrv::cli::printMessage(L"Error:\tone\ntwo \x1B[2J");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "qrv: Error: one; two \\x1B[2J\n");
}

}  // namespace
