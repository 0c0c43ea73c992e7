#include <engine/worktree/Unseen.h>

#include <gtest/gtest.h>

#include <string>
#include <system_error>
#include <vector>

namespace {

using qrv::isUnseen;
using qrv::sortedUnseen;
using qrv::Unseen;

std::vector<Unseen> denied(const std::vector<const wchar_t*>& paths) {
    std::vector<Unseen> unseen;
    unseen.reserve(paths.size());
    for (const wchar_t* const path : paths)
        unseen.push_back({path, std::make_error_code(std::errc::permission_denied)});
    return unseen;
}

std::string sorted(const std::vector<const wchar_t*>& paths) {
    std::string text;
    for (const Unseen& unseen : sortedUnseen(denied(paths)))
        text += unseen.path.toNarrow() + ", ";
    return text;
}

TEST(WhatIsUnseen, IsNamedOnceAndWithoutWhatLiesBelow) {
    EXPECT_EQ(sorted({L"plans/old/a", L"plans", L"b", L"plans", L"plans 2/x", L"plans/c"}),
              "b, plans, plans 2/x, ");
    EXPECT_EQ(sorted({L"a", L""}), ", ");
    EXPECT_EQ(sorted({}), "");
}

TEST(WhatIsUnseen, HidesEverythingBelowIt) {
    const std::vector<Unseen> unseen = sortedUnseen(denied({L"plans", L"notes/a.txt"}));
    for (const wchar_t* const path : {L"plans", L"plans/a", L"plans/deep/b", L"notes/a.txt"})
        EXPECT_TRUE(isUnseen(path, unseen)) << OdString(path).toNarrow();
    for (const wchar_t* const path : {L"plan", L"plans 2", L"notes", L"notes/b.txt", L""})
        EXPECT_FALSE(isUnseen(path, unseen)) << OdString(path).toNarrow();
    EXPECT_TRUE(isUnseen(L"anything", denied({L""})));
}

TEST(WhatIsUnseen, IsShownWithItsCause) {
    EXPECT_EQ(textOf(denied({L"plans\n"}).front()), OdString(L"plans\\x0A: Permission denied"));
    EXPECT_EQ(textOf(denied({L""}).front()), OdString(L".: Permission denied"));
}

}  // namespace
