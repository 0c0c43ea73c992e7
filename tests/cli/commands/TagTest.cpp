#include <tests/cli/commands/HistoryProject.h>
#include <tests/cli/commands/TwoCommits.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using common::RefType;
using qrv_test::HistoryProject;
using qrv_test::Outcome;

class TagCommand : public qrv_test::TwoCommits {
protected:
    TagCommand() : TwoCommits("First", "Second") {}

    Outcome tag(std::vector<std::string> arguments) const {
        return qrv("tag", std::move(arguments));
    }
};

TEST_F(TagCommand, ListsOnlyNamesForOtherPrograms) {
    repository.history.setReference(L"tender", RefType::Tag, second);
    repository.history.setReference(L"as-built", RefType::Tag, first);
    EXPECT_EQ(tag({"--names"}), (Outcome{0, "as-built\ntender\n", ""}));
    EXPECT_EQ(tag({"--names", "--json"}).status, 2);
}

TEST_F(TagCommand, ListsTags) {
    EXPECT_EQ(tag({}), (Outcome{0, "", ""}));
    repository.history.setReference(L"tender", RefType::Tag, second);
    repository.history.setReference(L"as-built", RefType::Tag, first);
    EXPECT_EQ(tag({}),
              (Outcome{0,
                       "as-built  1  " + first.left(10).toNarrow() + "  First\ntender    2  " +
                           second.left(10).toNarrow() + "  Second\n",
                       ""}));
}

TEST_F(TagCommand, MakesATag) {
    EXPECT_EQ(tag({"v2"}), (Outcome{0, "Made the tag 'v2' at commit 2: Second\n", ""}));
    EXPECT_EQ(tag({"v1", "1"}), (Outcome{0, "Made the tag 'v1' at commit 1: First\n", ""}));
    EXPECT_EQ(repository.history.reference(L"v2", RefType::Tag), second);
    EXPECT_EQ(repository.history.reference(L"v1", RefType::Tag), first);
}

TEST_F(TagCommand, MayHaveTheNameOfABranch) {
    EXPECT_EQ(tag({"master", "1"}).status, 0);
    EXPECT_EQ(repository.history.reference(L"master", RefType::Tag), first);
    EXPECT_EQ(repository.history.reference(L"master", RefType::Branch), second);
}

TEST_F(TagCommand, RefusesANameThatIsThereOrIsNone) {
    tag({"v1", "1"});
    EXPECT_EQ(tag({"v1"}), (Outcome{1, "", "qrv: There is a tag 'v1' already\n"}));
    EXPECT_EQ(tag({"-x"}).status, 2);
    EXPECT_EQ(tag({"12"}), (Outcome{1, "",
                                    "qrv: '12' cannot be the name of a branch or tag: it could be "
                                    "the number of a commit\n"}));
    EXPECT_EQ(tag({"v3", "3"}), (Outcome{1, "", "qrv: There is no commit, branch or tag '3'\n"}));
    EXPECT_EQ(repository.history.reference(L"v1", RefType::Tag), first);
    EXPECT_EQ(repository.history.references().size(), 2);
}

TEST_F(TagCommand, DeletesATag) {
    tag({"tender", "1"});
    EXPECT_EQ(tag({"--delete", "tendre"}),
              (Outcome{1, "", "qrv: There is no tag 'tendre'; did you mean 'tender'?\n"}));
    EXPECT_EQ(tag({"--delete", "tender"}),
              (Outcome{0, "Deleted the tag 'tender', which was at commit 1: First\n", ""}));
    EXPECT_EQ(tag({"--delete", "tender"}), (Outcome{1, "", "qrv: There is no tag 'tender'\n"}));
    EXPECT_EQ(tag({"x", "--delete", "tender"}).status, 2);
}

TEST_F(TagCommand, DeletesNoBranch) {
    EXPECT_EQ(tag({"--delete", "master"}), (Outcome{1, "", "qrv: There is no tag 'master'\n"}));
    EXPECT_EQ(repository.history.reference(L"master", RefType::Branch), second);
}

TEST_F(TagCommand, PrintsJson) {
    const std::string made = R"({
    "commit" : {
        "author" : "Ada",
        "hash" : ")" + first.toNarrow() +
                             R"(",
        "message" : "First",
        "number" : 1,
        "parents" : [
        ],
        "time" : "2024-03-05T14:07:09Z"
    },
    "name" : "v1"
})";
    EXPECT_EQ(tag({"v1", "1", "--json"}), (Outcome{0, made + "\n", ""}));
    std::string indented = "    ";
    for (const char character : made)
        indented += character == '\n' ? std::string("\n    ") : std::string(1, character);
    EXPECT_EQ(tag({"--json"}), (Outcome{0, "[\n" + indented + "\n]\n", ""}));
    EXPECT_EQ(tag({"--delete", "v1", "--json"}), (Outcome{0, made + "\n", ""}));
    EXPECT_EQ(tag({"--json"}), (Outcome{0, "[\n]\n", ""}));
}

TEST(TagCommandOfANewRepository, HasNothingToName) {
    const HistoryProject project;
    EXPECT_EQ(project.qrv({"tag", "v1"}),
              (Outcome{1, "", "qrv: There is no commit yet on the branch 'master'\n"}));
    EXPECT_EQ(project.qrv({"tag"}), (Outcome{0, "", ""}));
}

}  // namespace
