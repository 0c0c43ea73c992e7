#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::readFile;
using qrv_test::runQrv;
using qrv_test::writeFile;

TEST(InitCadIgnores, AddsRulesToTheDefaultOnes) {
    const qrv_test::TemporaryFolder folder;
    const qrv_test::Outcome outcome = runQrv(folder.path(), {"init", "--cad-ignores"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "Made a repository in '" + fs::canonical(folder.path()).string() +
                                  "'\nIgnore rules added: 16\n");
    EXPECT_THAT(readFile(folder / ".qrv/properties/ignore"),
                testing::EndsWith("*.bak\n*.dwl\n*.dwl2\n"
                                  "#Autosaves, backups, logs, lock files and temporary files:\n"
                                  "*.bk[0-9]\n*.sv[$]\n*.ac[$]\n*.autosave\n*.lck\n~[$]*\n"
                                  ".~lock.*\nplot.log\n*.plot.log\n*.err\n*.dmp\n*.tmp\n"
                                  ".*.qrv-tmp\ndesktop.ini\nThumbs.db\n.DS_Store\n"));
}

TEST(InitCadIgnores, IgnoresWhatProgramsLeaveAndNothingElse) {
    const qrv_test::TemporaryFolder folder;
    runQrv(folder.path(), {"init", "--cad-ignores"});
    for (const char* const name : {"a.bak",         "a.BAK",          "a.bk1",
                                   "a.sv$",         "a_1_1_1234.sv$", "a.ac$",
                                   "a.autosave",    "a.dwl",          "a.dwl2",
                                   "a.lck",         "~$list.xlsx",    ".~lock.list.ods#",
                                   "plot.log",      "Plot.log",       "sheet 1.plot.log",
                                   "a.err",         "a.dmp",          "a.tmp",
                                   ".17-1.qrv-tmp", "desktop.ini",    "Thumbs.db",
                                   ".DS_Store"})
        writeFile(folder / ("sub/" + std::string(name)), "x");
    for (const char* const name : {"a.dwg", "a.sv", "a.svg", "a.ac", "list.xlsx", "plot.log.txt",
                                   "errata.txt", "tmp", "thumbs.dbx", "a.bkp"})
        writeFile(folder / ("sub/" + std::string(name)), "x");
    EXPECT_EQ(runQrv(folder.path(), {"files"}).output,
              "sub/a.ac\nsub/a.bkp\nsub/a.dwg\nsub/a.sv\nsub/a.svg\nsub/errata.txt\n"
              "sub/list.xlsx\nsub/plot.log.txt\nsub/thumbs.dbx\nsub/tmp\n"
              ".qrv/properties/ignore\n");
}

TEST(InitCadIgnores, CompletesTheRulesOfAnOldRepository) {
    const qrv_test::TemporaryFolder folder;
    runQrv(folder.path(), {"init"});
    writeFile(folder / ".qrv/properties/ignore", "*.sv[$]\nours*\n");
    const std::string root = fs::canonical(folder.path());
    EXPECT_EQ(runQrv(folder.path(), {"init", "--cad-ignores"}).output,
              "'" + root + "' is already a repository\nIgnore rules added: 18\n");
    const std::string rules = readFile(folder / ".qrv/properties/ignore");
    EXPECT_THAT(rules, testing::StartsWith("*.sv[$]\nours*\n#"));
    EXPECT_EQ(runQrv(folder.path(), {"init", "--cad-ignores"}).output,
              "'" + root + "' is already a repository\nIgnore rules added: 0\n");
    EXPECT_EQ(readFile(folder / ".qrv/properties/ignore"), rules);
}

TEST(InitCadIgnores, AddsNothingUnasked) {
    const qrv_test::TemporaryFolder folder;
    runQrv(folder.path(), {"init"});
    EXPECT_THAT(readFile(folder / ".qrv/properties/ignore"),
                testing::EndsWith("#    lines starting with a ^ will be parsed as a regular "
                                  "expression\n*.bak\n*.dwl\n*.dwl2\n"));
}

}  // namespace
