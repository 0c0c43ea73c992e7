#include <tests/engine/history/Repository.h>

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <set>
#include <string>

namespace {

using qrv::FileDelta;
using qrv::Tree;
using qrv_test::file;
using qrv_test::removal;
using qrv_test::Repository;
using qrv_test::shown;

TEST(HeadFiles, AreWhatTheDeltasMakeOfThem) {
    Repository repository;
    auto& history = repository.history;
    EXPECT_EQ(history.headFiles(), Tree());
    history.changeHeadFiles({file("b", '2', 20), file("a", '1', 10), file("c", '3', 30)});
    EXPECT_EQ(shown(history.headFiles()), "a 1 10, b 2 20, c 3 30, ");
    history.changeHeadFiles({file("b", '4', 40), removal("c"), removal("none")});
    EXPECT_EQ(shown(history.headFiles()), "a 1 10, b 4 40, ");
    history.changeHeadFiles({file("a", '4', 40, "b"), file("b", '1', 10, "a")});
    EXPECT_EQ(shown(history.headFiles()), "a 4 40, b 1 10, ");
}

TEST(HeadFiles, AreOrderedAsTextsAre) {
    Repository repository;
    repository.history.changeHeadFiles(
        {file("\uFF21", '1'), file("\U0001F600", '2'), file("a\xFF", '3')});
    EXPECT_EQ(shown(repository.history.headFiles()), "a\xFF 3 1, \U0001F600 2 1, \uFF21 1 1, ");
}

TEST(HeadFiles, AreGivenWithoutTheirContentsInTheSameOrder) {
    Repository repository;
    auto& history = repository.history;
    EXPECT_TRUE(history.headSizes().empty());
    history.changeHeadFiles(
        {file("\uFF21", '1', 10), file("\U0001F600", '2', 20), file("a\xFF", '3', 30)});
    std::string sizes;
    for (const qrv::SizedFile& head : history.headSizes()) {
        sizes += head.path.toNarrow() + ' ' + std::to_string(head.sizeBytes) + ", ";
        EXPECT_EQ(history.headUrl(head.path), urlIn(history.headFiles(), head.path));
    }
    EXPECT_EQ(sizes, "a\xFF 30, \U0001F600 20, \uFF21 10, ");
    EXPECT_EQ(history.headUrl(L"none"), OdString());
}

TEST(HeadFiles, StayWhenADeltaIsRefused) {
    Repository repository;
    auto& history = repository.history;
    history.changeHeadFiles({file("a", '1')});
    FileDelta unsafe = file("b", '1');
    unsafe.url = L"po:../x";
    EXPECT_EQ(repository.complaint([&] {
        history.changeHeadFiles({removal("a"), unsafe});
    }),
              "The history 'DB' cannot keep this: 'po:../x' does not name a stored version");
    EXPECT_EQ(shown(history.headFiles()), "a 1 1, ");
}

/// Deltas of a random commit on `tree`: changes, removals, new files and renamings.
std::vector<FileDelta> randomDeltas(const Tree& tree, std::mt19937& random) {
    static constexpr std::array<const char*, 8> names = {"a", "b", "c", "d", "e", "f", "g", "h"};
    std::vector<FileDelta> deltas;
    std::set<OdString> renamed;
    for (const char* name : names) {
        const char letter = "0123456789abcdef"[random() % 16];
        const OdString source(names.at(random() % names.size()));
        if (random() % 3 == 0)
            continue;
        if (random() % 4 == 0)
            deltas.push_back(removal(name));
        else if (source != OdString(name) && tree.contains(source) && renamed.insert(source).second)
            deltas.push_back(file(name, letter, 2, source.toNarrow().c_str()));
        else
            deltas.push_back(file(name, letter));
    }
    return deltas;
}

TEST(HeadFiles, StayThoseOfTheCommitThroughAnyChanges) {
    std::mt19937 random(1);
    Repository repository;
    std::vector<OdString> parents;
    const qrv::DatabaseTransaction transaction(repository.history.database());
    for (int i = 0; i < 200; ++i) {
        const auto deltas = randomDeltas(repository.history.headFiles(), random);
        parents = {repository.add(parents, std::to_string(i).c_str(), deltas)};
        repository.history.changeHeadFiles(deltas);
        ASSERT_EQ(shown(repository.history.headFiles()),
                  shown(repository.history.tree(parents.front())));
    }
}

}  // namespace
