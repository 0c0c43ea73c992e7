#include <sys/Outcome.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <system_error>

namespace {

std::error_code systemError(int number) {
    return {number, std::system_category()};
}

TEST(Outcome, TakesNoSuchNameAndNoSuchFolderForAbsence) {
    EXPECT_TRUE(sys::meansAbsent(systemError(ENOENT)));
    EXPECT_TRUE(sys::meansAbsent(systemError(ENOTDIR)));
}

TEST(Outcome, TakesAFailedLookForNoAnswer) {
    for (const int number : {0, EACCES, EIO, ELOOP, EMFILE, ENAMETOOLONG, ENOMEM, EPERM, ESTALE})
        EXPECT_FALSE(sys::meansAbsent(systemError(number))) << number;
}

}  // namespace
