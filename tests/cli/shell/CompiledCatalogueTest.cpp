#include <cli/shell/CompiledCatalogue.h>
#include <tests/support/Catalogue.h>
#include <tests/support/Files.h>

#include <gtest/gtest.h>
#include <wx/init.h>
#include <wx/log.h>
#include <wx/translation.h>

#include <random>
#include <string>

namespace {

using qrv::cli::isCompiledCatalogue;
using qrv_test::compiledCatalogue;
using qrv_test::Texts;

const Texts texts = {{"Gone", "Fort"}, {"File '%ls' is gone", "Datei „%ls“ fehlt"}};

std::string withNumber(std::string bytes, std::size_t position, std::size_t number) {
    std::string four;
    qrv_test::append32(four, number);
    return bytes.replace(position, 4, four);
}

TEST(CompiledCatalogue, IsWhatTheBuildMakes) {
    EXPECT_TRUE(isCompiledCatalogue(compiledCatalogue(texts)));
    EXPECT_TRUE(isCompiledCatalogue(compiledCatalogue({})));
    for (const std::string language : {"de", "fr"})
        EXPECT_TRUE(isCompiledCatalogue(
            qrv_test::readFile(QRV_CATALOGUE_FOLDER "/" + language + "/LC_MESSAGES/qrv.mo")));
}

TEST(CompiledCatalogue, IsNothingThatIsCutOff) {
    const std::string whole = compiledCatalogue(texts);
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(isCompiledCatalogue(whole.substr(0, length))) << length;
}

TEST(CompiledCatalogue, HasEveryTableAndTextInside) {
    const std::string whole = compiledCatalogue(texts);
    const struct {
        const char* what;
        std::size_t position;
        std::size_t number;
    } cases[] = {
        {"magic number of the other byte order", 0, 0xDE120495},
        {"revision", 4, 1},
        {"no text", 8, 0},
        {"a text too many", 8, 4},
        {"as many texts as fit a number", 8, 0xFFFFFFFF},
        {"sources outside", 12, whole.size()},
        {"sources far outside", 12, 0xFFFFFFFC},
        {"sources in the header", 12, 4},
        {"sources at an odd place", 12, 29},
        {"translations outside", 16, whole.size() - 8},
        {"translations far outside", 16, 0xFFFFFFFC},
        {"first source's length", 28, whole.size()},
        {"first source's position", 32, whole.size()},
        {"second source's length and position wrap together", 36, 0xFFFFFFFF},
        {"second source without a NUL", 36, 1},
        {"last translation's length", 28 + 8 * 5, 0xFFFFFFFF},
        {"last translation's position", 28 + 8 * 5 + 4, whole.size() - 4},
    };
    for (const auto& [what, position, number] : cases)
        EXPECT_FALSE(isCompiledCatalogue(withNumber(whole, position, number))) << what;
}

TEST(CompiledCatalogue, IsInUtf8) {
    for (const std::string charset : {"ISO-8859-1", "UTF-7", "UTF-88", "nonsense", ""}) {
        std::string bytes = compiledCatalogue(texts);
        const std::size_t position = bytes.find("UTF-8\n");
        bytes.replace(position, 6, (charset + "\n      ").substr(0, 6));
        EXPECT_FALSE(isCompiledCatalogue(bytes)) << charset;
    }
}

/// Whatever passes is handed to wxWidgets, and must not lead it astray.
TEST(CompiledCatalogue, IsSafeToUse) {
    const wxInitializer host;
    const wxLogNull silence;
    const std::string whole = compiledCatalogue(texts);
    std::mt19937 random(20240305);
    int passed = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string bytes = whole;
        for (std::size_t changes = 1 + random() % 3; changes > 0; --changes)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        if (!isCompiledCatalogue(bytes))
            continue;
        ++passed;
        wxTranslations translations;
        translations.SetLoader(new qrv_test::MemoryLoader(bytes));
        translations.SetLanguage(wxString("de"));
        if (translations.AddCatalog("qrv"))
            static_cast<void>(translations.GetTranslatedString("Gone"));
    }
    EXPECT_GT(passed, 2000);
    EXPECT_LT(passed, 18000);
}

}  // namespace
