#include <common/config/ConfigPath.h>
#include <common/repository/IoInterface.h>
#include <common/repository/RootPath.h>
#include <common/server/Commit.h>
#include <common/state/Cache.h>
#include <common/storage/StorageUrl.h>
#include <common/worktree/FileChange.h>
#include <common/worktree/RepoIgnore.h>
#include <platform/ut/ScopedFault.h>
#include <tests/catalogue/Host.h>
#include <tests/support/Files.h>
#include <tests/support/RecordingIo.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <clocale>
#include <string>
#include <vector>

namespace {

using common::RootPath;
using qrv_test::Host;
using qrv_test::TemporaryFolder;

/// A new repository, whose messages a German reads.
class GermanLibrary : public testing::Test {
protected:
    GermanLibrary() { EXPECT_TRUE(host.isLoaded()); }

    const Host host{"de"};
    const TemporaryFolder folder;
    const RootPath root = RootPath::get(folder.text(), true).value();
};

template <class T>
std::string messageOf(const Expected<T>& failed) {
    return failed ? "(no failure)" : failed.error().message.toNarrow();
}

TEST_F(GermanLibrary, RefusesAFolderThatIsNoRepository) {
    const TemporaryFolder other;
    const std::string path = other.path();
    EXPECT_EQ(messageOf(RootPath::get(other.text(), false)),
              "Der Pfad " + path + " ist kein qrv-Ordner.");
    qrv_test::writeFile(other / "file", "");
    EXPECT_EQ(
        messageOf(RootPath::get(other.text("file/below"), true)),
        "Der Ordner der Versionsverwaltung kann nicht angelegt werden: " + path + "/file/below");
}

TEST_F(GermanLibrary, MissesTheStateFile) {
    const qrv_test::RecordingIo io;
    EXPECT_EQ(messageOf(common::Cache::get(root, io)),
              "Unter " + root.statePath().toNarrow() + " gibt es keine Zustandsdatei");
    qrv_test::writeFile(root.statePath().toNarrow(), "{}");
    EXPECT_EQ(messageOf(common::Cache::get(root, io)), "Der Zustand enthält keinen HEAD.");
}

TEST_F(GermanLibrary, RefusesValuesThatItDoesNotKnow) {
    EXPECT_EQ(messageOf(common::toFileChange(L"Added")),
              "Nicht unterstützte Art der Dateiänderung: Added");
    EXPECT_EQ(messageOf(common::getRevision(L"tf:x")), "Interner Fehler, ungültige URL: tf:x");
    EXPECT_EQ(messageOf(common::ConfigPath::get(OdString())),
              "Der Pfad der Konfiguration der Versionsverwaltung ist leer.");
    // A drive that is not there has no root.
    const ut::ScopedFault nothing(2, ENOENT);
    EXPECT_EQ(messageOf(common::ConfigPath::get(L"/")), "Der Pfad / ist ungültig.");
}

TEST_F(GermanLibrary, MissesAKeyOfARecord) {
    EXPECT_EQ(messageOf(common::deserializeRepoFile({})),
              "repo file konnte nicht gelesen werden, „storagePath“ fehlt");
}

TEST_F(GermanLibrary, TellsTheBadLineOfAnIgnoreFile) {
    qrv_test::writeFile(root.propertiesPath().toNarrow() + "/ignore", "*.bak\n^[\n");
    std::vector<std::string> messages;
    const common::RepoIgnore ignore(
        [&messages](const OdString& text) { messages.push_back(text.toNarrow()); }, root);
    EXPECT_THAT(messages,
                testing::ElementsAre("Beim Lesen der Ignorierdatei ist ein Fehler aufgetreten:",
                                     testing::StartsWith("Zeile 2: ")));
}

TEST_F(GermanLibrary, ExplainsTheIgnoreFileInCommentLines) {
    EXPECT_EQ(common::RepoIgnore::explanation(false).toNarrow(),
              "#Die folgenden Ausdrücke legen fest, welche Dateien ignoriert werden.\n"
              "#Sie können eigene hinzufügen. Beginnen Sie dazu eine neue Zeile.\n"
              "#Syntax: \n"
              "#    Zeilen, die mit # beginnen, sind Kommentare und werden nicht ausgewertet\n"
              "#    * steht für beliebig viele beliebige Zeichen\n"
              "#    ? steht für genau ein beliebiges Zeichen\n"
              "#    Zeichen zwischen [] stehen für eines von ihnen\n"
              "#        z. B. steht *[-+]*.txt für einige Zeichen,\n"
              "#        dann ein + oder -, einige Zeichen und am Ende .txt\n"
              "# Wenn Sie mehr ausdrücken wollen, können Sie auch reguläre Ausdrücke verwenden.\n"
              "#    Zeilen, die mit ^ beginnen, werden als regulärer Ausdruck gelesen\n");
}

TEST(FrenchLibrary, SpeaksFrench) {
    const Host host("fr");
    ASSERT_TRUE(host.isLoaded());
    EXPECT_EQ(messageOf(common::toFileChange(L"Added")),
              "Type de modification de fichier non pris en charge\u00A0: Added");
}

TEST(CatalogueHost, LeavesTheLocaleOfTheProcessAlone) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const Host host("de");
    ASSERT_TRUE(host.isLoaded());
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

}  // namespace
