#include <tests/cli/commands/HistoryProject.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::writeFile;

class IgnoreCommand : public testing::Test {
protected:
    fs::path file() const { return project / ".qrv/properties/ignore"; }
    void writeRules(const std::string& rules) const { writeFile(file(), rules); }
    static Outcome refusal(const std::string& message) { return {1, "", "qrv: " + message + "\n"}; }

    const HistoryProject project;
};

TEST_F(IgnoreCommand, ListsTheRulesInForceWithTheirLines) {
    writeRules("# ours\n\n*.bak\n^draft[0-9]+$\nold\x1b*");
    const Outcome listed = {0, "3: *.bak\n4: ^draft[0-9]+$\n5: old\\x1B*\n", ""};
    EXPECT_EQ(project.qrv({"ignore", "list"}), listed);
    EXPECT_EQ(project.qrv({"ignore"}), listed);
}

TEST_F(IgnoreCommand, ListsTheDefaultRulesOfANewRepository) {
    EXPECT_EQ(project.run({"ignore"}), "12: *.bak\n13: *.dwl\n14: *.dwl2\n");
}

TEST_F(IgnoreCommand, LeavesOutLinesThatAreNoRulesAndTellsThem) {
    writeRules("[\n*.a\n^(\n*.b\n#\n^[\n*.c\n");
    const Outcome outcome = project.qrv({"ignore", "list", "--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, R"([
    {
        "line" : 2,
        "rule" : "*.a"
    },
    {
        "line" : 4,
        "rule" : "*.b"
    },
    {
        "line" : 7,
        "rule" : "*.c"
    }
]
)");
    EXPECT_THAT(outcome.messages,
                testing::StartsWith("qrv: An error occurred while parsing the ignored file:\n"
                                    "qrv: Line 1: "));
}

TEST_F(IgnoreCommand, NamesTheRuleThatIgnoresAFile) {
    writeRules("#\n*.bak\n*.BAK\n");
    EXPECT_EQ(project.qrv({"ignore", "check", "plans/a.bak"}),
              (Outcome{0, "'plans/a.bak' is ignored by line 2: *.bak\n", ""}));
    EXPECT_EQ(project.qrv({"ignore", "check", "--json", "plans/a.bak"}), (Outcome{0,
                                                                                  R"({
    "ignored" : true,
    "line" : 2,
    "matched" : "plans/a.bak",
    "path" : "plans/a.bak",
    "rule" : "*.bak"
}
)",
                                                                                  ""}));
}

TEST_F(IgnoreCommand, NamesTheFolderThatIsIgnored) {
    writeRules("*.dxf\nout?\n");
    EXPECT_EQ(project.qrv({"ignore", "check", "out1/deep/a.dxf"}),
              (Outcome{0, "The folder 'out1' is ignored by line 2: out?\n", ""}));
}

TEST_F(IgnoreCommand, FailsForAFileThatNoRuleIgnores) {
    EXPECT_EQ(project.qrv({"ignore", "check", "plan.dxf"}), refusal("No rule ignores 'plan.dxf'"));
    EXPECT_EQ(project.qrv({"ignore", "check", "plan.dxf", "--json"}),
              (Outcome{1, "{\n    \"ignored\" : false,\n    \"path\" : \"plan.dxf\"\n}\n",
                       "qrv: No rule ignores 'plan.dxf'\n"}));
}

TEST_F(IgnoreCommand, KnowsTheMetadataFolderAndItsPropertiesFolder) {
    EXPECT_EQ(project.run({"ignore", "check", ".qrv/qrv.state"}),
              "'.qrv' is the metadata folder, which is never versioned\n");
    EXPECT_EQ(project.run({"ignore", "check", "sub/.qrv"}),
              "'sub/.qrv' is the metadata folder, which is never versioned\n");
    EXPECT_EQ(project.qrv({"ignore", "check", ".qrv/properties/ignore"}).status, 1);
    EXPECT_EQ(project.run({"ignore", "check", ".qrv/properties/a.bak"}),
              "'.qrv/properties/a.bak' is ignored by line 12: *.bak\n");
}

TEST_F(IgnoreCommand, AddsARuleAsTheLastLine) {
    writeRules("# ours\n*.bak");
    EXPECT_EQ(project.qrv({"ignore", "add", "~[$]*"}),
              (Outcome{0, "Added as line 3: ~[$]*\n", ""}));
    EXPECT_EQ(readFile(file()), "# ours\n*.bak\n~[$]*\n");
    EXPECT_EQ(project.run({"ignore", "add", "--json", "^x$"}),
              "{\n    \"line\" : 4,\n    \"rule\" : \"^x$\"\n}\n");
    EXPECT_EQ(readFile(file()), "# ours\n*.bak\n~[$]*\n^x$\n");
    EXPECT_EQ(project.run({"ignore", "check", "~$plan.doc"}),
              "'~$plan.doc' is ignored by line 3: ~[$]*\n");
}

TEST_F(IgnoreCommand, KeepsBytesThatAreNoText) {
    writeRules("caf\xe9*\n");
    project.run({"ignore", "add", "b\xff"});
    EXPECT_EQ(readFile(file()), "caf\xe9*\nb\xff\n");
}

TEST_F(IgnoreCommand, NotesThatARuleWithASlashMatchesNothing) {
    EXPECT_EQ(project.qrv({"ignore", "add", "plans/*.tmp"}),
              (Outcome{0, "Added as line 15: plans/*.tmp\n",
                       "qrv: Note: rules are compared with the names of files and folders, so that "
                       "one with a slash matches nothing\n"}));
}

TEST_F(IgnoreCommand, RefusesWhatIsNoRule) {
    const std::string before = readFile(file());
    EXPECT_EQ(project.qrv({"ignore", "add", ""}), refusal("'' is no rule: it is empty"));
    EXPECT_EQ(project.qrv({"ignore", "add", "# ours"}),
              refusal("'# ours' is no rule: it is a comment"));
    EXPECT_EQ(project.qrv({"ignore", "add", "a\nb"}),
              refusal("'a\\x0Ab' is no rule: it has more than one line"));
    EXPECT_EQ(project.qrv({"ignore", "add", "a\r"}),
              refusal("'a\\x0D' is no rule: it has more than one line"));
    EXPECT_EQ(project.qrv({"ignore", "add", "*.bak"}),
              refusal("The rule '*.bak' is there already, in line 12"));
    const Outcome uncompiled = project.qrv({"ignore", "add", "^("});
    EXPECT_EQ(uncompiled.status, 1);
    EXPECT_THAT(uncompiled.messages, testing::MatchesRegex("qrv: '\\^\\(' is no rule: [^:]+\n"));
    EXPECT_EQ(project.qrv({"ignore", "add", std::string(2001, 'a')}).status, 1);
    EXPECT_EQ(readFile(file()), before);
}

TEST_F(IgnoreCommand, RefusesAPathOutside) {
    EXPECT_EQ(project.qrv({"ignore", "check", "/etc/passwd"}).status, 1);
}

}  // namespace
