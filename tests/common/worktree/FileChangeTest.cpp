#include <common/worktree/FileChange.h>

#include <gmock/gmock.h>

#include <string>
#include <type_traits>
#include <utility>

using common::FileChange;

static_assert(std::is_same_v<std::underlying_type_t<FileChange>, std::int32_t>);

namespace {

const std::pair<int, const wchar_t*> codes[] = {
    {0, L"added"}, {1, L"modified"}, {2, L"removed"}, {3, L"unchanged"}};

}  // namespace

TEST(FileChange, KeepsItsNumbers) {
    EXPECT_EQ(static_cast<int>(FileChange::added), 0);
    EXPECT_EQ(static_cast<int>(FileChange::modified), 1);
    EXPECT_EQ(static_cast<int>(FileChange::removed), 2);
    EXPECT_EQ(static_cast<int>(FileChange::unchanged), 3);
}

TEST(FileChange, HasATextCodeInBothDirections) {
    for (const auto& [number, code] : codes) {
        const auto change = static_cast<FileChange>(number);
        EXPECT_EQ(common::toString(change).value(), code) << number;
        EXPECT_EQ(common::toFileChange(code).value(), change) << number;
    }
}

TEST(FileChange, HasNoTextCodeForOtherNumbers) {
    for (const int number : {4, -1, 256, 2147483647}) {
        const Expected<OdString> code = common::toString(static_cast<FileChange>(number));
        ASSERT_FALSE(code) << number;
        EXPECT_EQ(code.error().message, L"unsupported file change");
        EXPECT_EQ(code.error().code, 0);
    }
}

TEST(FileChange, IsNotReadFromAnyOtherText) {
    for (const char* code : {"", " added", "added ", "Added", "ADDED", "adde", "addedx", "Modified",
                             "removed\n", "delete", "0", "%ls", "caf\xE9"}) {
        const Expected<FileChange> change = common::toFileChange(OdString::fromNarrow(code));
        ASSERT_FALSE(change) << code;
        EXPECT_EQ(change.error().message.toNarrow(),
                  std::string("Unsupported file change enum: ") + code);
        EXPECT_EQ(change.error().code, 0);
    }
}

TEST(FileChange, IsNotReadFromATextWithANulBehindTheCode) {
    EXPECT_FALSE(common::toFileChange(std::wstring(L"added\0", 6)));
}
