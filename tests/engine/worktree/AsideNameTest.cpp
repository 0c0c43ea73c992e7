#include <engine/worktree/AsideName.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>

namespace {

using qrv::asideName;
using qrv::isAsideName;
using qrv::positionOfAside;

TEST(AsideName, TellsTheStep) {
    EXPECT_EQ(asideName(17, 0), ".17-0.qrv-aside");
    EXPECT_EQ(positionOfAside(asideName(17, 3)), std::optional<std::size_t>(17));
    EXPECT_EQ(positionOfAside(asideName(0, 0)), std::optional<std::size_t>(0));
}

TEST(AsideName, IsNoOtherName) {
    for (const char* name :
         {"", ".", ".qrv-aside", "17-0.qrv-aside", ".x-0.qrv-aside", ".17.qrv-aside",
          ".17-0.qrv-tmp", ".-17-0.qrv-aside", ".99999999999999999999-0.qrv-aside"})
        EXPECT_FALSE(isAsideName(name)) << name;
}

}  // namespace
