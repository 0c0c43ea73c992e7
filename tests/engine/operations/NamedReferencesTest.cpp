#include <engine/operations/NamedReferencesInternal.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/engine/worktree/Working.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace {

using common::RefType;
using qrv::CommitEntry;
using qrv::deleteReference;
using qrv::listReferences;
using qrv::makeReference;
using qrv::NamedReference;
using qrv::WorkingTree;
using testing::EndsWith;
using testing::HasSubstr;

/// Two commits on the branch "master".
class NamedReferences : public testing::Test {
protected:
    NamedReferences() {
        project.write({{"a.txt", "1"}});
        project.commit("First");
        project.write({{"a.txt", "2"}});
        project.commit("Second");
        workingTree = project.open();
    }

    Expected<CommitEntry> make(RefType type, const wchar_t* name, const wchar_t* commit) {
        return makeReference(workingTree->repository(), {type, name, commit});
    }
    Expected<CommitEntry> remove(RefType type, const wchar_t* name, bool force = false) {
        return deleteReference(workingTree->repository(), {type, name, force});
    }
    /// "name number, ..."
    std::string shown(RefType type) {
        std::string text;
        for (const NamedReference& reference : listReferences(workingTree->repository(), type))
            text += reference.name.toNarrow() + " " +
                    (reference.commit ? std::to_string(reference.commit->number) : "-") + ", ";
        return text;
    }
    static std::string messageOf(const Expected<CommitEntry>& commit) {
        return commit ? "done" : commit.error().message.toNarrow();
    }
    std::string log() const { return qrv_test::readFile(project / ".qrv/qrv.log"); }

    qrv_test::Working project;
    std::unique_ptr<WorkingTree> workingTree;
    qrv_test::RecordingCaller caller;
};

TEST_F(NamedReferences, AreMadeWhereAPersonSays) {
    EXPECT_EQ(make(RefType::Branch, L"side", L"1")->number, 1);
    EXPECT_THAT(log(), EndsWith("branch 'side'\n"));
    EXPECT_EQ(make(RefType::Tag, L"v1", L"HEAD")->number, 2);
    EXPECT_THAT(log(), EndsWith("tag 'v1'\n"));
    EXPECT_EQ(shown(RefType::Branch), "master 2, side 1, ");
    EXPECT_EQ(shown(RefType::Tag), "v1 2, ");
}

TEST_F(NamedReferences, AreRefusedWhereTheNameOrTheCommitIsWrong) {
    EXPECT_EQ(messageOf(make(RefType::Branch, L"master", L"1")),
              "There is a branch 'master' already");
    EXPECT_THAT(messageOf(make(RefType::Branch, L"a..b", L"1")), HasSubstr("a..b"));
    EXPECT_THAT(messageOf(make(RefType::Tag, L"v1", L"nothing")), HasSubstr("nothing"));
    ASSERT_TRUE(make(RefType::Tag, L"v1", L"1"));
    EXPECT_EQ(messageOf(make(RefType::Tag, L"v1", L"2")), "There is a tag 'v1' already");
    EXPECT_EQ(shown(RefType::Branch), "master 2, ");
    EXPECT_EQ(shown(RefType::Tag), "v1 1, ");
}

TEST_F(NamedReferences, AreDeletedWithTheCommitThatTheyNamed) {
    ASSERT_TRUE(make(RefType::Branch, L"side", L"1"));
    ASSERT_TRUE(make(RefType::Tag, L"v1", L"1"));
    EXPECT_EQ(remove(RefType::Branch, L"side")->number, 1);
    EXPECT_THAT(log(), EndsWith("deleted the branch 'side'\n"));
    EXPECT_EQ(remove(RefType::Tag, L"v1")->number, 1);
    EXPECT_THAT(log(), EndsWith("deleted the tag 'v1'\n"));
    EXPECT_EQ(shown(RefType::Branch), "master 2, ");
    EXPECT_EQ(shown(RefType::Tag), "");
}

TEST_F(NamedReferences, ThatAreNotThereAreNotDeleted) {
    ASSERT_TRUE(make(RefType::Tag, L"issued", L"1"));
    EXPECT_EQ(messageOf(remove(RefType::Tag, L"isued")),
              "There is no tag 'isued'; did you mean 'issued'?");
    EXPECT_EQ(messageOf(remove(RefType::Branch, L"issued")), "There is no branch 'issued'");
    EXPECT_THAT(messageOf(remove(RefType::Branch, L"master", true)),
                HasSubstr("'master' is the current branch"));
}

// Symptom to keep away: work that was only on a branch is gone with it after two weeks.
TEST_F(NamedReferences, OfBranchesThatAloneHoldCommitsAreDeletedByForceOnly) {
    workingTree.reset();
    project.run({"switch", "-c", "side"});
    project.write({{"a.txt", "3"}});
    project.commit("Third");
    project.run({"switch", "master"});
    workingTree = project.open();
    EXPECT_THAT(messageOf(remove(RefType::Branch, L"side")),
                HasSubstr("'side' has commits that are in no other branch or tag"));
    ASSERT_TRUE(make(RefType::Tag, L"held", L"side"));
    EXPECT_TRUE(remove(RefType::Branch, L"side"));
    ASSERT_TRUE(make(RefType::Branch, L"again", L"held"));
    ASSERT_TRUE(remove(RefType::Tag, L"held"));
    EXPECT_EQ(remove(RefType::Branch, L"again", true)->number, 3);
}

TEST_F(NamedReferences, AreMadeListedAndDeletedByTheFolderOfTheirRepository) {
    workingTree.reset();
    const std::string folder = project.folder.path();
    EXPECT_EQ(makeReference(folder, {RefType::Branch, L"side", L"1"}, caller)->number, 1);
    const auto branches = listReferences(folder, RefType::Branch, caller);
    ASSERT_EQ(branches->size(), 2U);
    EXPECT_EQ(branches->at(0).name, OdString(L"master"));
    EXPECT_TRUE(branches->at(0).isCurrent);
    EXPECT_EQ(branches->at(1).commit->number, 1);
    EXPECT_FALSE(branches->at(1).isCurrent);
    EXPECT_EQ(deleteReference(folder, {RefType::Branch, L"side"}, caller)->number, 1);
    EXPECT_EQ(listReferences(folder, RefType::Branch, caller)->size(), 1U);
    EXPECT_THAT(caller.notes, testing::IsEmpty());
}

TEST_F(NamedReferences, FailWithAMessageWhereThereIsNoRepositoryOrADamagedOne) {
    workingTree.reset();
    const qrv_test::TemporaryFolder elsewhere;
    EXPECT_THAT(messageOf(makeReference(elsewhere.path(), {RefType::Tag, L"v1", L"HEAD"}, caller)),
                HasSubstr("is not in a repository"));
    qrv_test::writeFile(project / ".qrv/qrv.db", std::string(4096, 'x'));
    const auto tags = listReferences(project.folder.path(), RefType::Tag, caller);
    ASSERT_FALSE(tags);
    EXPECT_THAT(tags.error().message.toNarrow(),
                AllOf(HasSubstr("The database '"), HasSubstr("cannot be used")));
}

}  // namespace
