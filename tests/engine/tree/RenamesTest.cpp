#include <engine/tree/Renames.h>
#include <tests/engine/tree/Trees.h>

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>

namespace {

using qrv::findRenames;
using qrv::RenameHalves;
using qrv::Renames;
using qrv::Tree;
using qrv_test::relative;
using qrv_test::treeOf;

/// The files of the tree, whose digests are their letters; each one that is asked for is noted.
RenameHalves halvesOf(const Tree& tree, std::string* asked = nullptr) {
    RenameHalves halves;
    for (const auto& [path, file] : tree)
        halves.files.push_back({path, file.sizeBytes});
    halves.digestOf = [tree, asked](const OdString& path) {
        if (asked != nullptr)
            *asked += path.toNarrow() + ' ';
        return urlIn(tree, path);
    };
    return halves;
}

/// "previous>path ..."
std::string shown(const Renames& renames) {
    std::string text;
    for (const auto& [path, previous] : renames)
        text += previous.toNarrow() + '>' + path.toNarrow() + ' ';
    return text;
}

std::string found(const std::string& removed, const std::string& added, const Renames& noted = {}) {
    return shown(findRenames(halvesOf(treeOf(removed)), halvesOf(treeOf(added)), noted));
}

TEST(FindRenames, JoinsFilesWithEqualContents) {
    EXPECT_EQ(found("a=1 z=2", "b=1 c=3 y=2"), "a>b z>y ");
    EXPECT_EQ(found("a=1", "b=2"), "");
}

TEST(FindRenames, TakesEachFileOnce) {
    EXPECT_EQ(found("a=1 b=1", "c=1 d=1 e=1"), "a>c b>d ");
    EXPECT_EQ(found("c=1 d=1 e=1", "a=1 b=1"), "c>a d>b ");
}

TEST(FindRenames, BelievesWhatIsNotedFirst) {
    EXPECT_EQ(found("a=1 b=2", "c=2 d=3", {{L"d", L"a"}}), "b>c a>d ");
    EXPECT_EQ(found("a=1 b=2", "c=2 d=3", {{L"c", L"a"}}), "a>c ");
}

TEST(FindRenames, IgnoresWhatIsNotedOfOtherFiles) {
    EXPECT_EQ(found("a=1", "b=2", {{L"b", L"x"}, {L"x", L"a"}}), "");
    EXPECT_EQ(found("a=1", "b=2 c=2", {{L"b", L"a"}, {L"c", L"a"}}), "a>b ");
}

TEST(FindRenames, JoinsNoEmptyFiles) {
    Tree removed = treeOf("a=1");
    Tree added = treeOf("b=1");
    removed[relative(L"a")].sizeBytes = added[relative(L"b")].sizeBytes = 0;
    EXPECT_EQ(shown(findRenames(halvesOf(removed), halvesOf(added))), "");
}

TEST(FindRenames, JoinsNoFileOfWhichNothingIsKnown) {
    RenameHalves unknown = halvesOf(treeOf("a=1"));
    unknown.digestOf = [](const OdString&) { return OdString(); };
    EXPECT_EQ(shown(findRenames(unknown, halvesOf(treeOf("b=1")))), "");
    EXPECT_EQ(shown(findRenames(halvesOf(treeOf("b=1")), unknown)), "");
    EXPECT_EQ(shown(findRenames(unknown, unknown)), "");
}

TEST(FindRenames, ReadsOnlyWhatMayBeEqual) {
    std::string asked;
    Tree added = treeOf("b=1 c=1 d=1");
    added[relative(L"b")].sizeBytes = 2;
    EXPECT_EQ(shown(findRenames(halvesOf(treeOf("a=1")), halvesOf(added, &asked))), "a>c ");
    EXPECT_EQ(asked, "c ");
}

TEST(FindRenames, JoinsEachHalfOfAnyTreesOnceAndLeavesNoPair) {
    std::mt19937 random(1);
    for (int trial = 0; trial < qrv_test::randomTrials; ++trial) {
        const Tree removed = qrv_test::randomTree(random);
        Tree added;
        for (const auto& [path, file] : qrv_test::randomTree(random))
            added[relative(L"new/" + path.text())] = file;
        std::multiset<OdString> left;
        for (const auto& [path, file] : removed)
            left.insert(file.contents);
        std::set<OdString> previous;
        const Renames renames = findRenames(halvesOf(removed), halvesOf(added));
        for (const auto& [path, old] : renames) {
            ASSERT_TRUE(previous.insert(old).second);
            ASSERT_EQ(urlIn(removed, old), urlIn(added, path));
            left.erase(left.find(urlIn(removed, old)));
        }
        for (const auto& [path, file] : added)
            ASSERT_TRUE(renames.contains(path) || !left.contains(file.contents));
    }
}

TEST(RenamesOf, AreThoseThatACommitNotes) {
    const Renames expected = {{L"new", L"old"}};
    EXPECT_EQ(qrv::renamesOf({qrv_test::file("a", 'a'), qrv_test::file("new", 'b', 1, "old"),
                              qrv_test::removal("old")}),
              expected);
}

}  // namespace
