#include <engine/base/Digest.h>
#include <engine/history/JournalEntry.h>
#include <engine/journal/OpenTree.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/engine/tree/Trees.h>
#include <tests/engine/worktree/Working.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using qrv::JournalEntry;
using qrv::notedEntry;
using qrv::TreeStep;
using qrv::WorkingTree;
using qrv_test::contentsOf;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::relative;
using qrv_test::Working;

OdString urlOf(const std::string& contents) {
    return OdString::fromNarrow("po:" + qrv::Digest::of(contents));
}

/// Entries as a stranger may put them into a repository. "side" is another branch than the current.
class PlanOfAStranger : public testing::Test {
protected:
    PlanOfAStranger() {
        project.write({{"a.txt", "first"}, {"b.txt", "b"}});
        project.commit("First");
        project.run({"switch", "-c", "side"});
        project.write({{"a.txt", "second"}});
        project.commit("Second");
        project.run({"switch", "master"});
        project.write({{"private.txt", "kept nowhere"}});
    }

    /// Whatever entry is noted stays.
    std::unique_ptr<WorkingTree> open() const {
        return std::move(*WorkingTree::open(project.folder.path(), qrv::Repository::Use::change,
                                            qrv_test::anyCaller()));
    }
    JournalEntry switching(std::vector<TreeStep> files) const {
        const std::unique_ptr<WorkingTree> workingTree = open();
        JournalEntry entry;
        entry.title = L"switch side";
        entry.branch = L"side";
        entry.commit =
            *workingTree->repository().history().reference(L"side", common::RefType::Branch);
        entry.steps = std::move(files);
        return entry;
    }
    static JournalEntry restoring(std::vector<TreeStep> files) {
        JournalEntry entry;
        entry.title = L"restore";
        entry.steps = std::move(files);
        return entry;
    }
    void note(const JournalEntry& entry) const { noteEntry(open()->repository().history(), entry); }

    /// What the commands say that would carry it out, when they agree and nothing was changed.
    std::string refusal(const JournalEntry& entry) const {
        note(entry);
        const auto before = contentsOf(project.folder.path());
        const Outcome outcome = project.qrv({"recover"});
        EXPECT_EQ(project.qrv({"tag", "v1"}), outcome);
        EXPECT_EQ(contentsOf(project.folder.path()), before);
        EXPECT_EQ(outcome.status, 1);
        return outcome.messages;
    }
    static std::string refused(const std::string& title, const std::string& cause) {
        return "qrv: '" + title + "' was interrupted, and what it left to do cannot be: " + cause +
               " (qrv recover --forget leaves the files as they are)\n";
    }

    const Working project;
};

// Symptom: a file of the victim was replaced by one that the owner of the repository had chosen.
// Cause: the steps of a noted entry were believed, whether or not any command could have left them.
TEST_F(PlanOfAStranger, IsRefusedWhenItsFilesAreNotThoseOfItsCommit) {
    const std::string cause = "'a.txt' would become a file that no commit has there";
    EXPECT_EQ(refusal(switching({{relative(L"a.txt"), urlOf("first"), urlOf("b"), 1}})),
              refused("switch side", cause));
    EXPECT_EQ(refusal(switching({{relative(L"a.txt"), urlOf("b"), urlOf("second"), 6}})),
              refused("switch side", cause));
    EXPECT_EQ(refusal(switching({{relative(L"a.txt"), urlOf("first"), {}, 0}})),
              refused("switch side", cause));
    EXPECT_EQ(refusal(restoring({{relative(L"a.txt"), urlOf("first"), urlOf("b"), 1}})),
              refused("restore", cause));
}

TEST_F(PlanOfAStranger, IsRefusedWhenItReplacesOrRemovesWhatIsKeptNowhere) {
    const std::string cause = "'private.txt' is missing in the storage";
    EXPECT_EQ(refusal(restoring({{relative(L"private.txt"), urlOf("kept nowhere"), {}, 0}})),
              refused("restore", cause));
    EXPECT_EQ(readFile(project / "private.txt"), "kept nowhere");
}

TEST_F(PlanOfAStranger, IsRefusedWithoutItsCommit) {
    JournalEntry entry = switching({});
    entry.commit = OdString(std::wstring(64, L'a'));
    EXPECT_EQ(refusal(entry),
              refused("switch side", "there is no commit '" + std::string(64, 'a') + "'"));
}

TEST_F(PlanOfAStranger, CanBeForgotten) {
    note(restoring({{relative(L"private.txt"), urlOf("kept nowhere"), {}, 0}}));
    EXPECT_EQ(project.qrv({"recover", "--forget"}),
              (Outcome{0, "'restore' is forgotten, and its files are left as they are: 1\n", ""}));
    EXPECT_FALSE(notedEntry(open()->repository().history()));
    EXPECT_EQ(readFile(project / "private.txt"), "kept nowhere");
    EXPECT_EQ(project.qrv({"verify"}).status, 0);
}

TEST_F(PlanOfAStranger, ForgottenAfterHeadHadMovedLeavesHeadAtTheBranchOfTheState) {
    JournalEntry entry = switching({{relative(L"a.txt"), urlOf("first"), urlOf("second"), 6}});
    {
        const std::unique_ptr<WorkingTree> workingTree = open();
        noteEntry(workingTree->repository().history(), entry);
        workingTree->repository().history().changeHeadFiles(
            {{relative(L"a.txt"), urlOf("second"), {}, 6}});
        workingTree->repository().history().setNote(qrv::headNote, entry.commit);
    }
    project.run({"recover", "--forget"});
    EXPECT_EQ(project.qrv({"verify"}).status, 0);
    EXPECT_EQ(project.run({"branch", "--json"}).find("\"current\" : true") != std::string::npos,
              true);
    const std::unique_ptr<WorkingTree> workingTree = open();
    EXPECT_EQ(workingTree->repository().branch(), OdString(L"master"));
    EXPECT_EQ(urlIn(workingTree->repository().headFiles(), L"a.txt"), urlOf("first"));
}

TEST_F(PlanOfAStranger, IsDoneWhenACommandCouldHaveLeftIt) {
    note(switching({{relative(L"a.txt"), urlOf("first"), urlOf("second"), 6}}));
    project.run({"recover"});
    EXPECT_EQ(readFile(project / "a.txt"), "second");
    note(restoring({{relative(L"a.txt"), urlOf("second"), urlOf("first"), 5}}));
    project.run({"recover"});
    EXPECT_EQ(readFile(project / "a.txt"), "first");
}

}  // namespace
