#include <platform/kernel/OdError.h>

#include <gmock/gmock.h>

namespace {

using testing::StrEq;

TEST(OdError, CarriesItsDescription) {
    EXPECT_EQ(OdError(L"no such thing").description(), OdString(L"no such thing"));
    EXPECT_EQ(OdError(OdString()).description(), OdString());
}

TEST(OdError, TellsItsDescriptionAsUtf8) {
    EXPECT_THAT(OdError(L"M\u00FCll \U0001F600").what(), StrEq("M\xC3\xBCll \xF0\x9F\x98\x80"));
    EXPECT_THAT(OdError(OdString()).what(), StrEq(""));
}

TEST(OdError, IsCaughtAsAStandardException) {
    try {
        throw OdError(L"thrown");
    } catch (const std::exception& error) {
        EXPECT_THAT(error.what(), StrEq("thrown"));
    }
}

TEST(OdError, KeepsItsDescriptionInACopy) {
    OdError copy(L"other");
    {
        const OdError original(L"original");
        copy = original;
    }

    EXPECT_EQ(copy.description(), OdString(L"original"));
    EXPECT_THAT(copy.what(), StrEq("original"));
}

}  // namespace
