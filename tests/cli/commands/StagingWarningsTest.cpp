#include <tests/cli/commands/HistoryProject.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::Environment;
using qrv_test::HistoryProject;
using qrv_test::runQrv;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

class StagingWarnings : public testing::Test {
protected:
    /// What `qrv add` tells besides the staged files.
    std::string notesOfAdding(const std::vector<std::string>& paths) const {
        std::vector<std::string> arguments = {"add"};
        arguments.insert(arguments.end(), paths.begin(), paths.end());
        const qrv_test::Outcome outcome =
            runQrv(project.folder.path(), arguments,
                   {{"QRV_AUTHOR", "ada"}, {"QRV_CONFIG_DIR", configuration.path()}});
        EXPECT_EQ(outcome.status, 0) << outcome;
        return outcome.messages;
    }
    void set(const std::string& key, const std::string& value) const {
        runQrv("/", {"config", key, value}, {{"QRV_CONFIG_DIR", configuration.path()}});
    }
    /// The file takes no room on the disk.
    void makeFile(const std::string& path, std::uintmax_t megabytes) const {
        writeFile(project / path, "");
        fs::resize_file(project / path, megabytes * 1'000'000);
    }

    const HistoryProject project;
    const TemporaryFolder configuration;
};

TEST_F(StagingWarnings, AreSilentAboutOrdinaryFiles) {
    project.write({{"plan.dwg", "plan"}, {"parts list.csv", "1;bolt\n"}, {"Übergabe/ß.txt", ""}});
    makeFile("large.ifc", 100);
    EXPECT_EQ(notesOfAdding({"."}), "");
}

TEST_F(StagingWarnings, TellOfALargeFileUntilItIsAllowed) {
    makeFile("scan.e57", 101);
    const std::string note =
        "qrv: Note: 'scan.e57' has 101 megabytes, and every version of it is kept (qrv config "
        "large-file 200 allows that)\n";
    EXPECT_EQ(notesOfAdding({"scan.e57"}), note);
    EXPECT_EQ(notesOfAdding({"scan.e57"}), note);
    set("large-file", "200");
    EXPECT_EQ(notesOfAdding({"scan.e57"}), "");
}

TEST_F(StagingWarnings, TellOfALargeCommitWithWhatIsStagedAlready) {
    set("large-file", "0");
    makeFile("a.e57", 600);
    makeFile("b.e57", 401);
    EXPECT_EQ(notesOfAdding({"a.e57"}), "");
    EXPECT_EQ(notesOfAdding({"b.e57"}),
              "qrv: Note: the next commit has 1001 megabytes (qrv config large-commit 1100 allows "
              "that)\n");
    set("large-commit", "1100");
    EXPECT_EQ(notesOfAdding({"b.e57"}), "");
    set("large-commit", "0");
    EXPECT_EQ(notesOfAdding({"b.e57"}), "");
}

TEST_F(StagingWarnings, TellOfNamesThatDifferInLetterCaseOnly) {
    project.write({{"Plan.dxf", "1"}, {"plan.dxf", "2"}});
    EXPECT_EQ(
        notesOfAdding({"plan.dxf"}),
        "qrv: Note: 'plan.dxf' and 'Plan.dxf' are one name on systems that do not tell letter "
        "case or accents apart\n");
    project.run({"unstage", "plan.dxf"});
    // Both are new: one note tells it.
    EXPECT_EQ(
        notesOfAdding({"Plan.dxf", "plan.dxf"}),
        "qrv: Note: 'Plan.dxf' and 'plan.dxf' are one name on systems that do not tell letter "
        "case or accents apart\n");
}

TEST_F(StagingWarnings, TellOfFoldersThatDifferInLetterCaseOnly) {
    project.write({{"Plans/a.dxf", "1"}, {"plans/b.dxf", "2"}});
    EXPECT_EQ(notesOfAdding({"plans/b.dxf"}),
              "qrv: Note: 'plans' and 'Plans' are one name on systems that do not tell letter case "
              "or accents apart\n");
}

TEST_F(StagingWarnings, TellOfNamesThatDifferInUnicodeFormOnly) {
    project.write({{"\u00e4.dxf", "composed"}, {"a\u0308.dxf", "in two pieces"}});
    EXPECT_EQ(notesOfAdding({"\u00e4.dxf"}),
              "qrv: Note: '\u00e4.dxf' and 'a\u0308.dxf' are one name on systems that do not tell "
              "letter case or accents apart\n");
}

TEST_F(StagingWarnings, SayNothingOfARenamingInLetterCase) {
    project.write({{"Plan.dxf", "1"}});
    project.commit("first");
    fs::rename(project / "Plan.dxf", project / "plan.dxf");
    EXPECT_EQ(notesOfAdding({"plan.dxf"}), "");
}

TEST_F(StagingWarnings, TellOfNamesThatWindowsCannotHold) {
    project.write({{"aux.dwg", "1"}, {"wh?t.dxf", "2"}});
    EXPECT_EQ(notesOfAdding({"aux.dwg", "wh?t.dxf"}),
              "qrv: Note: Windows cannot hold a file of the name 'aux.dwg'\n"
              "qrv: Note: Windows cannot hold a file of the name 'wh?t.dxf'\n");
}

TEST_F(StagingWarnings, TellOfADrawingThatIsOpen) {
    project.write({{"a.dwg", "1"},
                   {"a.dwl", ""},
                   {"B.DWG", "2"},
                   {"B.dwl2", ""},
                   {"c.txt", "3"},
                   {"c.dwl", ""}});
    EXPECT_EQ(
        notesOfAdding({"."}),
        "qrv: Note: somebody seems to have 'B.DWG' open ('B.dwl2' lies beside it); what is "
        "not saved is not committed\n"
        "qrv: Note: somebody seems to have 'a.dwg' open ('a.dwl' lies beside it); what is not "
        "saved is not committed\n");
}

TEST_F(StagingWarnings, OnlyCountManyOfAKind) {
    for (int i = 1; i <= 7; ++i)
        project.write({{"com" + std::to_string(i) + ".txt", std::to_string(i)}});
    const std::string notes = notesOfAdding({"."});
    EXPECT_THAT(notes, testing::HasSubstr("'com5.txt'"));
    EXPECT_THAT(notes, testing::Not(testing::HasSubstr("'com6.txt'")));
    EXPECT_THAT(notes, testing::EndsWith("qrv: Note: and likewise for others: 2\n"));
}

TEST_F(StagingWarnings, GoOnWithDefaultsWhenTheSettingsAreDamaged) {
    writeFile(configuration / "settings.json", "[]");
    makeFile("scan.e57", 101);
    const std::string notes = notesOfAdding({"scan.e57"});
    EXPECT_THAT(notes,
                testing::StartsWith("qrv: Note: your settings are not used: The settings '"));
    EXPECT_THAT(notes, testing::HasSubstr("'scan.e57' has 101 megabytes"));
}

}  // namespace
