#include <common/base/MessageInternal.h>
#include <common/worktree/FileChange.h>
#include <tests/support/Catalogue.h>

#include <gmock/gmock.h>
#include <wx/translation.h>

#include <cstdint>

namespace {

using common::translate;
using common::translatedError;

using qrv_test::Texts;
using Host = qrv_test::GermanHost;

TEST(Message, IsItsSourceTextWithoutACatalogue) {
    ASSERT_EQ(wxTranslations::Get(), nullptr);
    EXPECT_EQ(translate(L"File '%ls' is gone"), L"File '%ls' is gone");
    EXPECT_EQ(translate(L"File '%ls' is gone"), L"File '%ls' is gone");
    EXPECT_EQ(translatedError(L"File '%ls' is gone", OdString(L"a")).message, L"File 'a' is gone");
    EXPECT_EQ(translatedError(L"File '%ls' is gone", OdString(L"a")).code, 0);
}

TEST(Message, IsTheCataloguesTextWhereThereIsOne) {
    const Host host(Texts{{"Gone", "Fort, f\xC3\xBCr immer"}});
    ASSERT_TRUE(host.isLoaded());
    EXPECT_EQ(translate(L"Gone"), L"Fort, f\u00FCr immer");
}

TEST(Message, IsItsSourceTextWhereTheCatalogueLacksIt) {
    const Host host(Texts{{"Gone", "Fort"}});
    ASSERT_TRUE(host.isLoaded());
    EXPECT_EQ(translate(L"gone"), L"gone");
    EXPECT_EQ(translate(L"Gone "), L"Gone ");
}

TEST(Message, IsItsSourceTextAgainAfterTheCatalogueIsGone) {
    { const Host host(Texts{{"Gone", "Fort"}}); }
    EXPECT_EQ(translate(L"Gone"), L"Gone");
}

TEST(Message, KeepsCharactersBeyondTheFirstPlaneAsTwoUnits) {
    const Host host(Texts{{"Gone", "\xF0\x9F\x98\x80"}});
    const OdString text = translate(L"Gone");
    ASSERT_EQ(text.getLength(), 2);
    EXPECT_EQ(text[0], 0xD83D);
    EXPECT_EQ(text[1], 0xDE00);
}

TEST(Message, IsLookedUpBeforeItIsFilled) {
    const Host host(Texts{{"File '%ls' is gone", "Datei %ls fehlt"},
                          {"File 'Gone' is gone", "filled before it was looked up"},
                          {"Gone", "an argument was looked up"}});
    ASSERT_TRUE(host.isLoaded());
    const ErrorMessage error = translatedError(L"File '%ls' is gone", OdString(L"Gone"));
    EXPECT_EQ(error.message, L"Datei Gone fehlt");
    EXPECT_EQ(error.code, 0);
}

TEST(Message, SurvivesDamagedPlaceholders) {
    const struct {
        const char* translation;
        const wchar_t* message;
    } cases[] = {
        {"fehlt", L"fehlt"},
        {"%ls und %ls fehlen", L"a und %ls fehlen"},
        {"%i fehlt", L"%i fehlt"},
        {"%s %n %d %ls", L"%s %n %d a"},
        {"%", L"%"},
        {"%l", L"%l"},
        {"%%ls", L"%ls"},
        {"%1$ls %999999ls %*ls", L"%1$ls %999999ls %*ls"},
    };
    for (const auto& [translation, message] : cases) {
        const Host host(Texts{{"File '%ls' is gone", translation}});
        ASSERT_TRUE(host.isLoaded());
        EXPECT_EQ(translatedError(L"File '%ls' is gone", OdString(L"a")).message, message)
            << translation;
    }
}

TEST(Message, OfTheLibraryItselfIsTranslated) {
    const Host host(
        Texts{{"Unsupported file change enum: %ls", "%ls ist keine Art von \xC3\x84nderung"}});
    ASSERT_TRUE(host.isLoaded());
    const Expected<common::FileChange> change = common::toFileChange(L"Added");
    ASSERT_FALSE(change);
    EXPECT_EQ(change.error().message, L"Added ist keine Art von \u00C4nderung");
}

}  // namespace
