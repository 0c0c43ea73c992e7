#include <tests/engine/history/Repository.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <string>

namespace {

using qrv::CommitEntry;
using qrv::FileDelta;
using qrv::Tree;
using qrv::TreeFile;
using qrv_test::file;
using qrv_test::removal;
using qrv_test::Repository;
using qrv_test::shown;
using testing::ElementsAre;

/// A history whose commits are called by their messages.
struct Graph : Repository {
    std::map<std::string, OdString> hashes;

    void add(const std::string& name, const std::vector<std::string>& parents) {
        std::vector<OdString> parentHashes;
        for (const std::string& parent : parents)
            parentHashes.push_back(hashes.at(parent));
        hashes[name] = Repository::add(parentHashes, name.c_str());
    }
    std::string ancestors(const std::string& name) {
        std::string names;
        for (const CommitEntry& entry : history.ancestors(hashes.at(name)))
            names += entry.message.toNarrow() + " ";
        return names;
    }
    std::string mergeBase(const std::string& one, const std::string& other) {
        const auto base = history.mergeBase(hashes.at(one), hashes.at(other));
        return base ? history.commit(*base)->message.toNarrow() : "none";
    }
    bool buildsOn(const std::string& one, const std::string& other) {
        return history.buildsOn(hashes.at(one), hashes.at(other));
    }
};

/// Two lines, a and b, that begin in 1 and were merged once:
///
///     1 - a1 - a2 - m - a3
///       \    .----/
///        b1 - b2                   alone
struct TwoLines : Graph {
    TwoLines() {
        add("1", {});
        add("a1", {"1"});
        add("b1", {"1"});
        add("a2", {"a1"});
        add("alone", {});
        add("b2", {"b1"});
        add("m", {"a2", "b1"});
        add("a3", {"m"});
    }
};

TEST(Graph, AncestorsAreToldNewestFirst) {
    TwoLines graph;
    EXPECT_EQ(graph.ancestors("a3"), "a3 m a2 b1 a1 1 ");
    EXPECT_EQ(graph.ancestors("b2"), "b2 b1 1 ");
    EXPECT_EQ(graph.ancestors("alone"), "alone ");
    EXPECT_TRUE(graph.history.ancestors(OdString()).empty());
}

TEST(Graph, AncestorsAreWholeEntries) {
    TwoLines graph;
    for (const CommitEntry& entry : graph.history.ancestors(graph.hashes["a3"]))
        EXPECT_EQ(entry, graph.history.commit(entry.hash));
}

TEST(Graph, TheNewestAncestorsAreTheFirstOfAll) {
    TwoLines graph;
    const std::vector<CommitEntry> all = graph.history.ancestors(graph.hashes["a3"]);
    for (std::size_t most = 0; most <= all.size(); ++most)
        EXPECT_EQ(graph.history.ancestors(graph.hashes["a3"], most),
                  std::vector<CommitEntry>(all.begin(), all.begin() + static_cast<int>(most)));
    EXPECT_EQ(graph.history.ancestors(graph.hashes["a3"], 100), all);
}

TEST(Graph, MergeBaseIsTheLastCommitInCommon) {
    TwoLines graph;
    EXPECT_EQ(graph.mergeBase("a2", "b2"), "1");
    EXPECT_EQ(graph.mergeBase("a3", "b2"), "b1");
    EXPECT_EQ(graph.mergeBase("b2", "a3"), "b1");
    EXPECT_EQ(graph.mergeBase("a3", "a1"), "a1");
    EXPECT_EQ(graph.mergeBase("a1", "a1"), "a1");
    EXPECT_EQ(graph.mergeBase("a3", "alone"), "none");
    EXPECT_EQ(graph.history.mergeBase(graph.hashes["a1"], OdString()), std::nullopt);
    EXPECT_EQ(graph.history.mergeBase(OdString(), OdString()), std::nullopt);
}

TEST(Graph, MergeBaseOfACrissCrossIsTheNewerOne) {
    Graph graph;
    graph.add("1", {});
    graph.add("a", {"1"});
    graph.add("b", {"1"});
    graph.add("ab", {"a", "b"});
    graph.add("ba", {"b", "a"});
    EXPECT_EQ(graph.mergeBase("ab", "ba"), "b");
    EXPECT_EQ(graph.mergeBase("ba", "ab"), "b");
}

TEST(Graph, KnowsWhatBuildsOnWhat) {
    TwoLines graph;
    EXPECT_TRUE(graph.buildsOn("a3", "b1"));
    EXPECT_TRUE(graph.buildsOn("a3", "a3"));
    EXPECT_TRUE(graph.buildsOn("b2", "1"));
    EXPECT_FALSE(graph.buildsOn("a3", "b2"));
    EXPECT_FALSE(graph.buildsOn("1", "a3"));
    EXPECT_FALSE(graph.buildsOn("a3", "alone"));
    EXPECT_TRUE(graph.history.buildsOn(graph.hashes["1"], OdString()));
    EXPECT_TRUE(graph.history.buildsOn(OdString(), OdString()));
    EXPECT_FALSE(graph.history.buildsOn(OdString(), graph.hashes["1"]));
}

TEST(Graph, DoesNotKnowCommitsThatAreNotThere) {
    TwoLines graph;
    const OdString one = graph.hashes["1"];
    const std::string unknown = "The history 'DB' has no commit 'none'";
    auto& history = graph.history;
    EXPECT_EQ(graph.complaint([&] { history.ancestors(L"none"); }), unknown);
    EXPECT_EQ(graph.complaint([&] { history.mergeBase(one, L"none"); }), unknown);
    EXPECT_EQ(graph.complaint([&] { history.buildsOn(L"none", one); }), unknown);
    EXPECT_EQ(graph.complaint([&] { history.buildsOn(one, L"none"); }), unknown);
    EXPECT_EQ(graph.complaint([&] { history.tree(L"none"); }), unknown);
}

/// A history of random commits with up to three parents, and for each the numbers of all that it
/// builds on.
struct RandomGraph : Repository {
    std::vector<OdString> hashes = {OdString()};
    std::vector<std::set<std::size_t>> reached = {{}};

    explicit RandomGraph(unsigned seed) {
        std::mt19937 random(seed);
        qrv::DatabaseTransaction transaction(history.database());
        for (std::size_t number = 1; number <= 25; ++number) {
            std::set<std::size_t> parents;
            for (unsigned i = random() % 4; i > 0 && number > 1; --i)
                parents.insert(1 + random() % (number - 1));
            std::set<std::size_t> all = {number};
            std::vector<OdString> parentHashes;
            for (const std::size_t parent : parents) {
                parentHashes.push_back(hashes[parent]);
                all.insert(reached[parent].begin(), reached[parent].end());
            }
            hashes.push_back(add(parentHashes, std::to_string(number).c_str()));
            reached.push_back(all);
        }
        transaction.commit();
    }

    /// The newest of the common ancestors on which no other one builds.
    std::optional<OdString> slowMergeBase(std::size_t one, std::size_t other) const {
        std::vector<std::size_t> common;
        std::set_intersection(reached[one].begin(), reached[one].end(), reached[other].begin(),
                              reached[other].end(), std::back_inserter(common));
        std::optional<OdString> newest;
        for (const std::size_t candidate : common) {
            const bool isBest = std::none_of(common.begin(), common.end(), [&](std::size_t each) {
                return each != candidate && reached[each].contains(candidate);
            });
            if (isBest)
                newest = hashes[candidate];
        }
        return newest;
    }
};

TEST(Graph, OfAnyShapeIsWalkedAsItsDefinitionSays) {
    for (unsigned seed = 1; seed <= 5; ++seed) {
        RandomGraph graph(seed);
        for (std::size_t one = 1; one < graph.hashes.size(); ++one) {
            std::set<std::size_t> ancestors;
            for (const CommitEntry& entry : graph.history.ancestors(graph.hashes[one]))
                ancestors.insert(static_cast<std::size_t>(entry.number));
            ASSERT_EQ(ancestors, graph.reached[one]);
            for (std::size_t other = 1; other < graph.hashes.size(); ++other) {
                ASSERT_EQ(graph.history.buildsOn(graph.hashes[one], graph.hashes[other]),
                          graph.reached[one].contains(other));
                ASSERT_EQ(graph.history.mergeBase(graph.hashes[one], graph.hashes[other]),
                          graph.slowMergeBase(one, other));
            }
        }
    }
}

TEST(Graph, TreeIsTheFirstParentsWithTheDeltas) {
    Repository repository;
    const OdString one = repository.add({}, "one", {file("a", '1', 10), file("b", '2', 20)});
    const OdString side = repository.add({one}, "side", {file("s", '9')});
    const OdString two =
        repository.add({one}, "two", {file("a", '3', 30), removal("b"), file("c", '4', 40)});
    const OdString merge = repository.add({two, side}, "merge", {file("m", '5', 50)});
    EXPECT_EQ(shown(repository.history.tree(one)), "a 1 10, b 2 20, ");
    EXPECT_EQ(shown(repository.history.tree(two)), "a 3 30, c 4 40, ");
    EXPECT_EQ(shown(repository.history.tree(merge)), "a 3 30, c 4 40, m 5 50, ");
    EXPECT_EQ(repository.history.tree(OdString()), Tree());
}

TEST(Graph, TreeLosesTheOldNameOfARenamedFile) {
    Repository repository;
    const OdString one =
        repository.add({}, "one", {file("a", '1'), file("b", '2'), file("c", '3')});
    const OdString swapped =
        repository.add({one}, "swap", {file("a", '2', 1, "b"), file("b", '1', 1, "a")});
    const OdString moved =
        repository.add({swapped}, "move", {file("c", '4'), file("d", '3', 1, "c")});
    EXPECT_EQ(shown(repository.history.tree(swapped)), "a 2 1, b 1 1, c 3 1, ");
    EXPECT_EQ(shown(repository.history.tree(moved)), "a 2 1, b 1 1, c 4 1, d 3 1, ");
}

}  // namespace
