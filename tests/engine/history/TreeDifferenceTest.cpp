#include <engine/history/HistoryCheck.h>
#include <tests/engine/history/OlderHistory.h>

#include <gmock/gmock.h>

#include <array>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using qrv::Database;
using qrv::FileDelta;
using qrv::History;
using qrv::Tree;
using qrv::TreeFile;
using qrv_test::file;
using qrv_test::removal;
using qrv_test::Repository;

std::string shown(const std::optional<TreeFile>& version) {
    return version ? qrv_test::letterOf(version->contents) + std::to_string(version->sizeBytes)
                   : "-";
}

std::string shown(const std::vector<qrv::TreeChange>& changes) {
    std::string text;
    for (const qrv::TreeChange& change : changes)
        text += change.path.bytes() + " " + shown(change.before) + " " + shown(change.after) + ", ";
    return text;
}

TEST(TreeDifference, OfNeighboursIsWhatTheCommitDid) {
    Repository repository;
    auto& history = repository.history;
    const OdString one =
        repository.add({}, "one", {file("a", '1', 10), file("b", '2', 20), file("c", '3', 30)});
    const OdString two =
        repository.add({one}, "two", {file("d", '1', 10, "a"), file("b", '4', 40), removal("c")});
    EXPECT_EQ(shown(history.difference(one, two)), "a 110 -, b 220 440, c 330 -, d - 110, ");
    EXPECT_EQ(shown(history.difference(two, one)), "a - 110, b 440 220, c - 330, d 110 -, ");
    EXPECT_EQ(shown(history.difference({}, one)), "a - 110, b - 220, c - 330, ");
    EXPECT_EQ(shown(history.difference(one, one)), "");
    EXPECT_EQ(shown(history.difference({}, {})), "");
}

TEST(TreeDifference, KnowsNothingOfWhatWasChangedAndChangedBack) {
    Repository repository;
    const OdString one = repository.add({}, "one", {file("a", '1')});
    const OdString two = repository.add({one}, "two", {file("a", '2')});
    const OdString three = repository.add({two}, "three", {file("a", '1')});
    EXPECT_EQ(shown(repository.history.difference(one, three)), "");
}

TEST(TreeDifference, OfAFileThatTookTheNameOfARenamedOne) {
    Repository repository;
    const OdString one = repository.add({}, "one", {file("a", '1'), file("b", '2')});
    const OdString two =
        repository.add({one}, "two", {file("a", '2', 1, "b"), file("b", '1', 1, "a")});
    EXPECT_EQ(shown(repository.history.difference(one, two)), "a 11 21, b 21 11, ");
    EXPECT_EQ(shown(repository.history.fileAt(two, L"a")), "21");
    EXPECT_EQ(shown(repository.history.fileAt(two, L"b")), "11");
}

TEST(TreeDifference, OfWhatNoCommitHasIsAnError) {
    Repository repository;
    const OdString one = repository.add({}, "one", {file("a", '1')});
    EXPECT_EQ(repository.complaint([&] { repository.history.difference(one, L"none"); }),
              "The history 'DB' has no commit 'none'");
    EXPECT_EQ(repository.complaint([&] { repository.history.fileAt(L"none", L"a"); }),
              "The history 'DB' has no commit 'none'");
}

TEST(TreeDifference, KnowsWhetherACommitHoldsAFileOrOneBelow) {
    Repository repository;
    auto& history = repository.history;
    const OdString one = repository.add({}, "one", {file("a/b/c", '1'), file("a-b", '2')});
    const OdString two = repository.add({one}, "two", {file("a", '1', 1, "a/b/c")});
    for (const wchar_t* const path : {L"", L"a", L"a/b", L"a/b/c", L"a-b"})
        EXPECT_TRUE(history.holds(one, path)) << OdString(path).toNarrow();
    for (const wchar_t* const path : {L"b", L"a/b/c/d", L"a/c", L"a-"})
        EXPECT_FALSE(history.holds(one, path)) << OdString(path).toNarrow();
    EXPECT_TRUE(history.holds(two, L"a"));
    EXPECT_FALSE(history.holds(two, L"a/b"));
    EXPECT_FALSE(history.holds({}, L""));
    EXPECT_FALSE(history.holds(one, L"a", [](const OdString&) { return true; }));
}

constexpr std::array<const char*, 6> paths = {"a", "b", "c/d", "c/e", "f", "g"};

std::vector<FileDelta> randomDeltas(const Tree& tree, std::mt19937& random) {
    std::vector<FileDelta> deltas;
    std::set<OdString> renamed;
    for (const char* const path : paths) {
        const char letter = "123"[random() % 3];
        const OdString source(paths.at(random() % paths.size()));
        if (random() % 3 != 0)
            continue;
        if (random() % 4 == 0)
            deltas.push_back(removal(path));
        else if (source != OdString(path) && tree.contains(source) && renamed.insert(source).second)
            deltas.push_back(file(path, letter, 1, source.toNarrow().c_str()));
        else
            deltas.push_back(file(path, letter));
    }
    return deltas;
}

/// Branches off anywhere, merges anything, now and then begins anew.
struct RandomHistory : Repository {
    explicit RandomHistory(unsigned seed, int count) : random(seed) {
        commits.emplace_back();
        qrv::DatabaseTransaction transaction(history.database());
        for (int i = 0; i < count; ++i)
            addOne(i);
        transaction.commit();
    }
    void addOne(int index) {
        std::vector<OdString> parents;
        const OdString first = random() % 3 == 0 ? any() : commits.back();
        if (!first.isEmpty() && random() % 20 != 0)
            parents.push_back(first);
        if (const OdString second = any();
            !parents.empty() && !second.isEmpty() && second != parents.front() && random() % 5 == 0)
            parents.push_back(second);
        const Tree before = parents.empty() ? Tree() : history.tree(parents.front());
        commits.push_back(
            add(parents, std::to_string(index).c_str(), randomDeltas(before, random)));
    }
    OdString any() { return commits[random() % commits.size()]; }

    std::mt19937 random;
    /// With the empty hash.
    std::vector<OdString> commits;
};

std::string differenceOfTrees(History& history, const OdString& one, const OdString& other) {
    const Tree before = history.tree(one);
    const Tree after = history.tree(other);
    std::vector<qrv::TreeChange> changes;
    for (const char* const path : paths) {
        const TreeFile* const old = fileIn(before, OdString(path));
        const TreeFile* const now = fileIn(after, OdString(path));
        qrv::TreeChange change = {qrv_test::relative(path), {}, {}};
        if (old != nullptr)
            change.before = *old;
        if (now != nullptr)
            change.after = *now;
        if (change.before != change.after)
            changes.push_back(std::move(change));
    }
    return shown(changes);
}

void expectDifferencesOfTrees(RandomHistory& repository, History& history, int trials) {
    for (int trial = 0; trial < trials; ++trial) {
        const OdString one = repository.any();
        const OdString other = repository.any();
        ASSERT_EQ(shown(history.difference(one, other)), differenceOfTrees(history, one, other));
        const OdString path(paths.at(repository.random() % paths.size()));
        const Tree tree = history.tree(one);
        const TreeFile* const there = fileIn(tree, path);
        ASSERT_EQ(shown(history.fileAt(one, path)),
                  shown(there == nullptr ? std::nullopt : std::optional(*there)));
    }
}

TEST(TreeDifference, IsThatOfTheTreesInAnyHistory) {
    for (unsigned seed = 1; seed <= 5; ++seed) {
        RandomHistory repository(seed, 80);
        expectDifferencesOfTrees(repository, repository.history, 200);
        EXPECT_THAT(problemsOf(repository.history), testing::IsEmpty());
    }
}

TEST(TreeDifference, IsThatOfTheTreesInAnOlderHistory) {
    RandomHistory repository(7, 80);
    makeLayout2(repository);
    {
        History look = History::open(repository.root, Database::Access::readOnly);
        expectDifferencesOfTrees(repository, look, 50);
    }
    History upgraded = History::open(repository.root, Database::Access::create);
    expectDifferencesOfTrees(repository, upgraded, 200);
    EXPECT_THAT(problemsOf(upgraded), testing::IsEmpty());
}

// Whoever changed the file by hand gets an error, and every walk ends.
TEST(TreeDifference, DistrustsTheLines) {
    struct Case {
        const char* tampering;
        std::string complaint;
    };
    const Case cases[] = {
        {"DELETE FROM lines WHERE number = 3", "commit 3 is on no line of first parents"},
        {"UPDATE lines SET line = 4 WHERE number = 3", "commit 3 is on no line of first parents"},
        {"UPDATE lines SET line = -1 WHERE number = 3", "-1 is no number of a commit"},
        {"UPDATE lines SET line = 3 WHERE number = 3; UPDATE parents SET parent = 5",
         "commit 3 cannot build on commit 5"},
    };
    for (const Case& each : cases) {
        Repository repository;
        const OdString one = repository.add({}, "one", {file("a", '1')});
        const OdString two = repository.add({one}, "two", {file("a", '2')});
        const OdString three = repository.add({two}, "three", {file("a", '3')});
        repository.tamper(each.tampering);
        EXPECT_EQ(repository.complaint([&] { repository.history.difference({}, three); }),
                  "The history 'DB' is damaged: " + each.complaint)
            << each.tampering;
        EXPECT_THAT(problemsOf(repository.history), testing::Not(testing::IsEmpty()));
    }
}

}  // namespace
