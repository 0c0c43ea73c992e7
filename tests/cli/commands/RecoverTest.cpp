#include <common/repository/RootPath.h>
#include <engine/base/Digest.h>
#include <engine/history/History.h>
#include <engine/history/JournalEntry.h>
#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/paths/Paths.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using qrv_test::contentsOf;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::relative;

OdString urlOf(const std::string& contents) {
    return OdString::fromNarrow("po:" + qrv::Digest::of(contents));
}

/// Two versions of a file, of which the first is to come back.
class RecoverCommand : public testing::Test {
protected:
    RecoverCommand() {
        project.write({{"a.txt", "first"}});
        project.commit("First");
        project.write({{"a.txt", "second"}});
        project.commit("Second");
    }
    void interruptRestore() const {
        const auto root = common::RootPath::get(project.folder.text(), false).value();
        qrv::History history = qrv::History::open(root, qrv::Database::Access::readWrite);
        qrv::JournalEntry entry;
        entry.title = L"restore";
        entry.steps = {{relative(L"a.txt"), urlOf("second"), urlOf("first"), 5}};
        noteEntry(history, entry);
    }

    const HistoryProject project;
};

TEST_F(RecoverCommand, HasNothingToDoInMostCases) {
    EXPECT_EQ(project.qrv({"recover"}), (Outcome{0, "Nothing was interrupted\n", ""}));
    EXPECT_EQ(project.run({"recover", "--json"}),
              "{\n    \"files\" : [\n    ],\n    \"interrupted\" : null,\n    \"outcome\" : "
              "\"nothing\"\n}\n");
}

TEST_F(RecoverCommand, TellsWhatItWouldDo) {
    interruptRestore();
    const auto before = contentsOf(project.folder.path());
    EXPECT_EQ(project.run({"recover", "--dry-run"}),
              "'restore' is to be finished; files: 1\n  a.txt\n");
    EXPECT_EQ(project.run({"recover", "-n", "--json"}),
              "{\n    \"files\" : [\n        \"a.txt\"\n    ],\n    \"interrupted\" : \"restore\","
              "\n    \"outcome\" : \"to-finish\"\n}\n");
    EXPECT_EQ(contentsOf(project.folder.path()), before);
}

TEST_F(RecoverCommand, FinishesWhatWasInterrupted) {
    interruptRestore();
    EXPECT_EQ(project.qrv({"recover"}),
              (Outcome{0, "'restore' is finished; files: 1\n",
                       "qrv: Note: 'restore' was interrupted; it is being finished\n"
                       "qrv: Note: 'restore' was interrupted and is now finished\n"}));
    EXPECT_EQ(readFile(project / "a.txt"), "first");
    EXPECT_EQ(project.run({"recover"}), "Nothing was interrupted\n");
    EXPECT_THAT(readFile(project / ".qrv/qrv.log"),
                testing::HasSubstr(" - recover: restore finished\n"));
}

TEST_F(RecoverCommand, RefusesTwoThingsAtOnce) {
    EXPECT_EQ(project.qrv({"recover", "--forget", "--dry-run"}).status, 2);
}

}  // namespace
