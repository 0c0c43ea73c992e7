#include <engine/history/Plan.h>
#include <tests/engine/history/Repository.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using qrv::forgetPlan;
using qrv::notedPlan;
using qrv::notePlan;
using qrv::Plan;
using qrv_test::relative;
using qrv_test::Repository;
using qrv_test::url;

Plan examplePlan() {
    Plan plan;
    plan.title = L"switch to 'side'";
    plan.recovery = Plan::Recovery::takeBack;
    plan.branch = L"side";
    plan.commit = OdString(std::wstring(64, L'a'));
    plan.files = {{relative(L"z"), url('1'), url('2'), 20},
                  {relative(L"a"), OdString(), url('3'), 30},
                  {relative(L"b"), url('4'), OdString(), 0}};
    return plan;
}

TEST(Plan, ComesBackAsItWasNoted) {
    Repository repository;
    EXPECT_EQ(notedPlan(repository.history), std::nullopt);
    notePlan(repository.history, examplePlan());
    auto reader = qrv::History::open(repository.root, qrv::Database::Access::readOnly);
    EXPECT_EQ(notedPlan(reader), examplePlan());
}

TEST(Plan, IsReplacedByAnotherOne) {
    Repository repository;
    notePlan(repository.history, examplePlan());
    Plan other;
    other.title = L"restore";
    other.files = {{relative(L"c"), url('5'), url('6'), 7}};
    notePlan(repository.history, other);
    EXPECT_EQ(notedPlan(repository.history), other);
    notePlan(repository.history, Plan());
    EXPECT_EQ(notedPlan(repository.history), Plan());
}

TEST(Plan, IsForgotten) {
    Repository repository;
    forgetPlan(repository.history);
    notePlan(repository.history, examplePlan());
    forgetPlan(repository.history);
    EXPECT_EQ(notedPlan(repository.history), std::nullopt);
    notePlan(repository.history, Plan());
    EXPECT_EQ(notedPlan(repository.history), Plan());
}

TEST(Plan, ThatCouldNotBeReadBackIsRefusedAndTheOldOneStays) {
    Repository repository;
    notePlan(repository.history, examplePlan());
    const auto complaint = [&](const Plan& plan) {
        return repository.complaint([&] { notePlan(repository.history, plan); });
    };
    Plan plan = examplePlan();
    plan.branch = L"a b";
    EXPECT_EQ(complaint(plan),
              "The history 'DB' cannot keep this: 'a b' cannot be the name of a branch or tag: it "
              "has a blank in it");
    plan = examplePlan();
    plan.commit = L"abc";
    EXPECT_EQ(complaint(plan), "The history 'DB' cannot keep this: 'abc' is no hash");
    plan = examplePlan();
    plan.files[1].before = L"x";
    EXPECT_EQ(complaint(plan),
              "The history 'DB' cannot keep this: 'x' does not name a stored version");
    EXPECT_EQ(notedPlan(repository.history), examplePlan());
}

TEST(Plan, ThatWasChangedByHandIsRefused) {
    struct Case {
        const char* tampering;
        std::string complaint;
    };
    const Case cases[] = {
        {"UPDATE plan SET branch = '-x'",
         "'-x' cannot be the name of a branch or tag: it begins like an option"},
        {"UPDATE plan SET commit_hash = '../x'", "'../x' is no hash"},
        {"UPDATE plan SET recovery = 2", "2 is no kind of recovery"},
        {"UPDATE plan_files SET path = '/a' WHERE position = 1",
         "'/a' cannot be used as a path: it is not relative"},
        {"UPDATE plan_files SET before = 'x' WHERE position = 1",
         "'x' does not name a stored version"},
        {"UPDATE plan_files SET after = 'x' WHERE position = 1",
         "'x' does not name a stored version"},
        {"UPDATE plan_files SET size = -1 WHERE position = 1", "-1 is no size of a file"},
    };
    for (const Case& each : cases) {
        Repository repository;
        notePlan(repository.history, examplePlan());
        repository.tamper(each.tampering);
        EXPECT_EQ(repository.complaint([&] { notedPlan(repository.history); }),
                  "The history 'DB' is damaged: " + each.complaint)
            << each.tampering;
    }
}

}  // namespace
