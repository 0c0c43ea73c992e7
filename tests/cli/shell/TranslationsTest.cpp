#include <tests/cli/Program.h>
#include <tests/support/Catalogue.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::compiledCatalogue;
using qrv_test::Environment;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::TemporaryFolder;
using qrv_test::Texts;
using qrv_test::writeFile;

const Environment german = {{"LC_ALL", "de_DE.UTF-8"}};

/// A folder with a repository that lacks its state, about which the library complains.
class Translation : public testing::Test {
protected:
    Translation() { fs::create_directory(folder / ".qrv"); }

    Outcome failed(const std::string& message) const { return {1, "", "qrv: " + message + "\n"}; }

    const TemporaryFolder folder;
    const std::string stateFile = fs::canonical(folder.path()).string() + "/.qrv/qrv.state";
    const Outcome englishFailure = failed("No state file found at " + stateFile);
    const Outcome germanFailure = failed("Unter " + stateFile + " gibt es keine Zustandsdatei");
    const Outcome frenchFailure =
        failed("Aucun fichier d’état trouvé à l’emplacement " + stateFile);
};

TEST_F(Translation, IsInTheLanguageOfTheEnvironment) {
    const struct {
        Environment environment;
        const Outcome& outcome;
    } cases[] = {
        {{{"LC_ALL", "de_DE.UTF-8"}}, germanFailure},
        {{{"LC_ALL", "de"}}, germanFailure},
        {{{"LC_ALL", "de_AT@euro"}}, germanFailure},
        {{{"LC_ALL", "de_CH.ISO-8859-1"}}, germanFailure},
        {{{"LC_MESSAGES", "fr_FR.UTF-8"}}, frenchFailure},
        {{{"LANG", "fr_CA.UTF-8"}}, frenchFailure},
        {{{"LC_ALL", ""}, {"LC_MESSAGES", "de"}, {"LANG", "fr"}}, germanFailure},
        {{{"LC_ALL", "de"}, {"LC_MESSAGES", "fr"}, {"LANG", "fr"}}, germanFailure},
        {{{"LC_ALL", "C"}, {"LC_MESSAGES", "fr"}, {"LANG", "fr"}}, englishFailure},
        {{{"LANG", ""}}, englishFailure},
        {{{"LANG", "POSIX"}}, englishFailure},
        {{{"LANG", "C.UTF-8"}}, englishFailure},
        {{{"LANG", "en_GB.UTF-8"}}, englishFailure},
        {{{"LANG", "it_IT.UTF-8"}}, englishFailure},
        {{{"LANG", "DE"}}, englishFailure},
        {{{"LANG", "d"}}, englishFailure},
    };
    for (const auto& [environment, outcome] : cases)
        EXPECT_EQ(runQrv(folder.path(), {"status"}, environment), outcome)
            << testing::PrintToString(environment);
}

TEST_F(Translation, IsInTheFirstLanguageOfAListThatThereIs) {
    const struct {
        Environment environment;
        const Outcome& outcome;
    } cases[] = {
        {{{"LANG", "en_GB"}, {"LANGUAGE", "de"}}, germanFailure},
        {{{"LANG", "de_DE"}, {"LANGUAGE", "fr_FR.UTF-8:de"}}, frenchFailure},
        {{{"LANG", "de_DE"}, {"LANGUAGE", "it::nl_NL:fr:de"}}, frenchFailure},
        {{{"LANG", "de_DE"}, {"LANGUAGE", "it"}}, englishFailure},
        {{{"LANG", "de_DE"}, {"LANGUAGE", "it:en_GB:de"}}, englishFailure},
        {{{"LANG", "de_DE"}, {"LANGUAGE", "C:de"}}, englishFailure},
        {{{"LANG", "C"}, {"LANGUAGE", "de"}}, englishFailure},
        {{{"LANG", ""}, {"LANGUAGE", "de"}}, englishFailure},
        {{{"LANG", "de_DE"}, {"LANGUAGE", ""}}, germanFailure},
    };
    for (const auto& [environment, outcome] : cases)
        EXPECT_EQ(runQrv(folder.path(), {"status"}, environment), outcome)
            << testing::PrintToString(environment);
}

TEST_F(Translation, CoversTheProgramsOwnTexts) {
    const fs::path inner = folder / "a";
    fs::remove(folder / ".qrv");
    fs::create_directory(inner);
    const std::string path = fs::canonical(inner);
    EXPECT_EQ(runQrv(inner, {"status"}, german),
              failed("„" + path +
                     "“ liegt in keinem Repository, und auch kein Ordner darüber ist eines (qrv "
                     "init legt eines an)"));
    EXPECT_EQ(runQrv(inner, {"init"}, german),
              (Outcome{0, "Repository in „" + path + "“ angelegt\n", ""}));
    EXPECT_EQ(runQrv(inner, {"init"}, german),
              (Outcome{0, "„" + path + "“ ist bereits ein Repository\n", ""}));
}

TEST_F(Translation, LeavesTheFormOfNumbersAlone) {
    fs::remove(folder / ".qrv");
    ASSERT_EQ(runQrv(folder.path(), {"init"}).status, 0);
    const std::string state =
        "{\n    \"head\" : {\n        \"reference\" : \"a\"\n    },\n"
        "    \"x\" : 1.5000000000000000\n}";
    writeFile(folder / ".qrv/qrv.state", state);
    EXPECT_EQ(runQrv(folder.path(), {"state"}, german), (Outcome{0, state + "\n", ""}));
}

/// The program as if it were installed in the test's folder, so that it finds the catalogues there.
class InstalledTranslation : public Translation {
protected:
    InstalledTranslation() {
        fs::create_directories(catalogue.parent_path());
        fs::create_directory(folder / "bin");
        fs::copy_file(QRV_PROGRAM, folder / "bin/qrv");
        // Where the program looks for its libraries.
        const fs::path libraries = QRV_LIBRARIES;
        const fs::path fromProgram =
            libraries.lexically_relative(fs::path(QRV_PROGRAM).parent_path());
        const fs::path link = (folder / "bin" / fromProgram).lexically_normal();
        fs::create_directories(link.parent_path());
        fs::create_directory_symlink(libraries, link);
    }

    Outcome runInstalled(const Environment& environment = german) const {
        return runShell(folder.path(), "bin/qrv status", environment);
    }
    /// The program with these bytes as its German catalogue.
    Outcome runWith(const std::string& bytes) const {
        writeFile(catalogue, bytes);
        return runInstalled();
    }
    Outcome runWith(const Texts& texts) const { return runWith(compiledCatalogue(texts)); }

    const fs::path catalogue = folder / "share/locale/de/LC_MESSAGES/qrv.mo";
    const std::string compiled = readFile(QRV_CATALOGUE_FOLDER "/de/LC_MESSAGES/qrv.mo");
};

TEST_F(InstalledTranslation, IsFoundInARelativePlaceFromTheProgram) {
    EXPECT_EQ(runInstalled(), englishFailure);
    EXPECT_EQ(runWith(compiled), germanFailure);
    EXPECT_EQ(
        runShell("/", folder.path().string() + "/bin/qrv -C " + folder.path().string() + " status",
                 german),
        germanFailure);
    fs::create_symlink("bin/qrv", folder / "link");
    EXPECT_EQ(runShell(folder.path(), "./link status", german), germanFailure);
}

TEST_F(InstalledTranslation, IsNeverLookedForInTheCurrentFolder) {
    for (const std::string place :
         {"de/LC_MESSAGES/qrv.mo", "de/qrv.mo", "qrv.mo", "locale/../.qrv/de/LC_MESSAGES/qrv.mo",
          "x/share/locale/de/LC_MESSAGES/qrv.mo", "bin/share/locale/de/LC_MESSAGES/qrv.mo"})
        writeFile(folder / place, compiled);
    EXPECT_EQ(runInstalled(), englishFailure);
    Environment environment = german;
    environment["LC_PATH"] = folder.path().string();
    environment["WXPREFIX"] = (folder / "x").string();
    environment["TEXTDOMAINDIR"] = folder.path().string();
    EXPECT_EQ(runInstalled(environment), englishFailure);
}

TEST_F(InstalledTranslation, IsNotLookedForWhereALanguageIsAPath) {
    writeFile(folder / "share/locale/x/y/LC_MESSAGES/qrv.mo", compiled);
    writeFile(folder / "share/evil/LC_MESSAGES/qrv.mo", compiled);
    const std::string outside = (folder / "share/evil").string();
    for (const std::string& language :
         std::vector<std::string>{"x/y", "../evil", "de/../../evil", outside}) {
        EXPECT_EQ(runInstalled({{"LANG", language}}), englishFailure) << language;
        EXPECT_EQ(runInstalled({{"LANG", "it"}, {"LANGUAGE", language}}), englishFailure)
            << language;
    }
}

TEST_F(InstalledTranslation, IsLeftOutWhenTheCatalogueIsDamaged) {
    const std::string header = compiled.substr(0, 28);
    std::string wrongMagic = compiled;
    wrongMagic[0] = '\0';
    std::string manyTexts = compiled;
    manyTexts.replace(8, 4, "\xFF\xFF\xFF\xFF");
    std::string farTables = compiled;
    farTables.replace(12, 4, "\xF0\xFF\xFF\xFF");
    for (const std::string& bytes :
         {std::string(), header, compiled.substr(0, compiled.size() / 2),
          compiled.substr(0, compiled.size() - 1), wrongMagic, manyTexts, farTables,
          std::string(1000, 'x'), std::string(1000, '\0'), header + std::string(1000, '\xFF')})
        EXPECT_EQ(runWith(bytes), englishFailure) << bytes.size();
}

TEST_F(InstalledTranslation, IsUsedWithoutAWordAboutAnOddHeader) {
    const std::string field = "Project-Id-Version: qrv\n";
    std::string bytes = compiled;
    bytes.replace(bytes.find(field), field.size(), "Plural-Forms: nplurals=\n");
    EXPECT_EQ(runWith(bytes), germanFailure);
}

TEST_F(InstalledTranslation, IsLeftOutWhenTheCatalogueIsNoFile) {
    ASSERT_EQ(::mkfifo(catalogue.c_str(), 0600), 0);
    EXPECT_EQ(runInstalled(), englishFailure);
    fs::remove(catalogue);
    fs::create_directory(catalogue);
    EXPECT_EQ(runInstalled(), englishFailure);
    fs::remove(catalogue);
    fs::create_symlink("/dev/zero", catalogue);
    EXPECT_EQ(runInstalled(), englishFailure);
    fs::remove(catalogue);
    writeFile(catalogue, "");
    fs::resize_file(catalogue, std::uintmax_t{1} << 40U);
    EXPECT_EQ(runInstalled(), englishFailure);
}

TEST_F(InstalledTranslation, DoesNoHarmWithDamagedPlaceholders) {
    const std::string source = "No state file found at %ls";
    const struct {
        std::string translation;
        std::string message;
    } cases[] = {
        {"nichts", "nichts"},
        {"%ls und %ls und %i", stateFile + " und %ls und %i"},
        {"%i, %ls", "%i, %ls"},
        {"%n%s%p%d %ls", "%n%s%p%d " + stateFile},
        {"%1$ls %*ls %999999999ls %", "%1$ls %*ls %999999999ls %"},
        {"\x1B[2J%ls", "\\x1B[2J" + stateFile},
        {std::string(1000000, 'x') + "%ls", std::string(1000000, 'x') + stateFile},
        // Not UTF-8, so wxWidgets drops it.
        {"\xFF\xFE%ls", "No state file found at " + stateFile},
    };
    for (const auto& [translation, message] : cases)
        EXPECT_EQ(runWith(Texts{{source, translation}}), failed(message))
            << translation.substr(0, 100);
}

}  // namespace
