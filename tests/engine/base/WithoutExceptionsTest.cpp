#include <engine/base/WithoutExceptions.h>
#include <platform/kernel/OdError.h>

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

namespace {

using qrv::withoutExceptions;

template <class Exception>
std::string messageOfThrown(const Exception& exception) {
    const Expected<int> result = withoutExceptions([&]() -> Expected<int> { throw exception; });
    return result ? "done" : result.error().message.toNarrow();
}

TEST(WithoutExceptions, AResultStaysWhatItIs) {
    EXPECT_EQ(withoutExceptions([]() -> Expected<int> { return 3; }).value(), 3);
    const Expected<int> failed = withoutExceptions([]() -> Expected<int> {
        return ErrorMessage{L"No", 7};
    });
    EXPECT_EQ(failed.error().message, OdString(L"No"));
    EXPECT_EQ(failed.error().code, 7);
}

TEST(WithoutExceptions, AnExceptionBecomesItsMessage) {
    EXPECT_EQ(messageOfThrown(OdError(L"\x2116 5")), "\xE2\x84\x96 5");
    EXPECT_EQ(messageOfThrown(std::length_error("too long")), "too long");
    EXPECT_EQ(messageOfThrown(std::bad_alloc()), "There is not enough memory.");
}

}  // namespace
