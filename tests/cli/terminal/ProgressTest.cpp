#include <cli/terminal/Progress.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

using qrv::cli::Progress;
using qrv::cli::sizeText;

TEST(SizeText, HasTwoDigitsAtLeastAndTheUnitThatFits) {
    struct Case {
        std::int64_t sizeBytes;
        const wchar_t* text;
    };
    const Case cases[] = {
        {0, L"0 bytes"},
        {999, L"999 bytes"},
        {1000, L"1.0 KB"},
        {1449, L"1.4 KB"},
        {9999, L"9.9 KB"},
        {10'000, L"10 KB"},
        {999'999, L"999 KB"},
        {1'000'000, L"1.0 MB"},
        {23'400'000, L"23 MB"},
        {1'200'000'000, L"1.2 GB"},
        {5'000'000'000'000, L"5.0 TB"},
        {std::numeric_limits<std::int64_t>::max(), L"9223372 TB"},
    };
    for (const Case& example : cases)
        EXPECT_EQ(sizeText(example.sizeBytes), OdString(example.text)) << example.sizeBytes;
}

TEST(Progress, IsSilentWhereStandardErrorIsNoTerminal) {
    testing::internal::CaptureStderr();
    {
        Progress progress(L"Storing", 2);
        progress.add(5);
        progress.add(7);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
