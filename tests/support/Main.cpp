#include <tests/support/Locale.h>

#include <gmock/gmock.h>

// The tests run in the locale of the environment, as a host's process does: what we read and write
// must not depend on it.
int main(int argumentCount, char** arguments) {
    testing::InitGoogleMock(&argumentCount, arguments);
    qrv_test::useLocaleOfTheEnvironment();
    return RUN_ALL_TESTS();
}
