#include <engine/operations/Log.h>
#include <tests/engine/operations/TwoSides.h>

namespace {

using qrv::Log;
using qrv::LogRequest;
using qrv_test::failureOf;
using testing::HasSubstr;

class LogOfTwoSides : public qrv_test::TwoSides {
protected:
    /// The messages, newest first: "On master, First, ".
    std::string messages(const LogRequest& request) {
        std::string text;
        const Expected<Log> found = log(root(), request, caller);
        for (const qrv::CommitEntry& commit : found->commits)
            text += commit.message.toNarrow() + ", ";
        return text;
    }
};

TEST_F(LogOfTwoSides, BeginsWithTheCurrentBranchAndGoesBack) {
    EXPECT_EQ(messages({}), "On master, First, ");
    EXPECT_EQ(messages({L"side", std::nullopt, std::nullopt}), "On the side, First, ");
    EXPECT_EQ(messages({std::nullopt, 1, std::nullopt}), "On master, ");
}

TEST_F(LogOfTwoSides, CanBeAskedForOneFile) {
    EXPECT_EQ(messages({std::nullopt, std::nullopt, (project / "b.txt").native()}), "First, ");
    EXPECT_THAT(failureOf(log(root(), {std::nullopt, std::nullopt, (project / "none.txt").native()},
                              caller)),
                HasSubstr("No commit has changed"));
}

TEST_F(LogOfTwoSides, TellsWhereBranchesAre) {
    const Expected<Log> found = log(root(), {}, caller);
    EXPECT_EQ(found->branch, OdString(L"master"));
    EXPECT_EQ(found->references.size(), 2U);
}

}  // namespace
