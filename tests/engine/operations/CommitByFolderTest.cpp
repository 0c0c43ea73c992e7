#include <engine/operations/Commit.h>
#include <tests/engine/worktree/Working.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using qrv::commit;
using qrv::Committed;

/// Is asked whether it would wait with the end of the process.
class WaitingCaller : public qrv_test::RecordingCaller {
public:
    std::shared_ptr<void> deferInterruption() override {
        ++deferred;
        return std::make_shared<int>(1);
    }

    int deferred = 0;
};

/// A repository with one staged file.
class CommitByFolder : public testing::Test {
protected:
    CommitByFolder() {
        project.write({{"plan.dwg", "plan"}});
        project.run({"add", "plan.dwg"});
    }
    static std::string messageOf(const Expected<Committed>& made) {
        return made ? "done" : made.error().message.toNarrow();
    }

    qrv_test::Working project;
    WaitingCaller caller;
};

TEST_F(CommitByFolder, IsMadeOfWhatIsStaged) {
    const Expected<Committed> made =
        commit(project.folder.path(), {L"ada", L" \n The plan\n"}, caller);
    ASSERT_TRUE(made);
    EXPECT_EQ(made->branch, OdString(L"master"));
    EXPECT_EQ(made->commit.number, 1);
    EXPECT_EQ(made->commit.author, OdString(L"ada"));
    EXPECT_EQ(made->commit.message, OdString(L"The plan"));
    EXPECT_EQ(caller.deferred, 1);
    EXPECT_THAT(project.run({"log", "--json"}), testing::HasSubstr(made->commit.hash.toNarrow()));
}

TEST_F(CommitByFolder, NeedsAMessageAndSomethingStaged) {
    const std::string folder = project.folder.path();
    EXPECT_EQ(messageOf(commit(folder, {L"ada", L" \n"}, caller)),
              "A commit needs a message that says what was done");
    ASSERT_TRUE(commit(folder, {L"ada", L"First"}, caller));
    EXPECT_EQ(messageOf(commit(folder, {L"ada", L"Second"}, caller)),
              "Nothing is staged (qrv add stages files)");
}

}  // namespace
