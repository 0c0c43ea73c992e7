#include <engine/operations/Ignore.h>
#include <engine/operations/Init.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using qrv_test::anyCaller;
using qrv_test::RecordingCaller;
using qrv_test::TemporaryFolder;
using testing::ElementsAre;

constexpr const char* file = ".qrv/properties/ignore";

class Ignore : public testing::Test {
protected:
    Ignore() {
        EXPECT_TRUE(qrv::initialise(folder.path(), {}, anyCaller()));
        qrv_test::writeFile(folder / file, "# ours\n*.bak\n^[\n");
    }

    const TemporaryFolder folder;
    RecordingCaller caller;
};

TEST_F(Ignore, ListsTheRulesInForceAndTellsOfTheOthers) {
    const auto rules = qrv::listIgnoreRules(folder.path(), caller);
    ASSERT_TRUE(rules);
    ASSERT_EQ(rules->size(), 1U);
    EXPECT_EQ(rules->front().line, 2);
    EXPECT_EQ(rules->front().text, OdString(L"*.bak"));
    EXPECT_THAT(caller.notes, ElementsAre("An error occurred while parsing the ignored file:",
                                          testing::StartsWith("Line 3: ")));
}

TEST_F(Ignore, SaysWhichRuleLeavesOutAPath) {
    const auto ignored = qrv::checkIgnored(folder.path(), folder / "old.bak/plan.dxf", anyCaller());
    ASSERT_TRUE(ignored && ignored->reason);
    EXPECT_EQ(ignored->path, OdString(L"old.bak/plan.dxf"));
    EXPECT_EQ(ignored->reason->path, OdString(L"old.bak"));
    EXPECT_EQ(ignored->reason->line, 2);
    const auto kept = qrv::checkIgnored(folder.path(), folder / "plan.dxf", anyCaller());
    ASSERT_TRUE(kept);
    EXPECT_FALSE(kept->reason);
    EXPECT_FALSE(qrv::checkIgnored(folder.path(), "/elsewhere", anyCaller()));
}

TEST_F(Ignore, AddsARuleAndRefusesWhatIsNone) {
    const auto added = qrv::addIgnoreRule(folder.path(), L"a/b", caller);
    ASSERT_TRUE(added);
    EXPECT_EQ(added->line, 4);
    EXPECT_THAT(caller.notes,
                ElementsAre("Note: rules are compared with the names of files and folders, so that "
                            "one with a slash matches nothing"));
    const std::string bytes = qrv_test::readFile(folder / file);
    EXPECT_EQ(bytes, "# ours\n*.bak\n^[\na/b\n");
    EXPECT_EQ(qrv::addIgnoreRule(folder.path(), L"#", anyCaller()).error().message,
              OdString(L"'#' is no rule: it is a comment"));
    EXPECT_EQ(qrv_test::readFile(folder / file), bytes);
}

}  // namespace
