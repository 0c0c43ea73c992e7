#include <tests/engine/history/Repository.h>

#include <gmock/gmock.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using qrv::FileDelta;
using qrv::HeadChange;
using qrv_test::file;
using qrv_test::removal;
using qrv_test::Repository;
using testing::ElementsAre;

sys::FileStamp stampOf(std::int64_t sizeBytes, std::int64_t modifiedNs = 5) {
    return {.number = ~std::uint64_t{0},
            .sizeBytes = sizeBytes,
            .modifiedNs = modifiedNs,
            .changedNs = -6};
}

std::vector<std::string> pathsAfter(qrv::History& history, const HeadChange& change) {
    std::vector<std::string> paths;
    const std::vector<qrv::RelativePath> changed = history.headChangesAfter(change).value();
    for (const qrv::RelativePath& path : changed)
        paths.push_back(path.bytes());
    return paths;
}

std::vector<FileDelta> manyFiles(int count) {
    std::vector<FileDelta> deltas;
    for (int i = 0; i < count; ++i)
        deltas.push_back(file(std::to_string(i).c_str(), '1'));
    return deltas;
}

TEST(HeadStamps, AreKeptBesideTheFile) {
    Repository repository;
    auto& history = repository.history;
    history.changeHeadFiles({file("a", '1', 10), file("b", '2', 20), file("c", '3', 30)},
                            [](const OdString& path) -> std::optional<sys::FileStamp> {
                                if (path == OdString(L"c"))
                                    return std::nullopt;
                                return stampOf(10);
                            });
    EXPECT_EQ(history.headFile(L"a")->stamp, stampOf(10));
    EXPECT_EQ(history.headFile(L"b")->stamp, std::nullopt) << "it has another size";
    EXPECT_EQ(history.headFile(L"c")->stamp, std::nullopt);
    EXPECT_EQ(history.headFile(L"d"), std::nullopt);
}

TEST(HeadStamps, AreForgottenWithTheContents) {
    Repository repository;
    auto& history = repository.history;
    history.changeHeadFiles({file("a", '1', 10)}, [](const OdString&) { return stampOf(10); });
    history.changeHeadFiles({file("a", '1', 10)});
    EXPECT_EQ(history.headFile(L"a")->stamp, std::nullopt);
}

TEST(HeadStamps, AreNotedWhenTheSizeIsRight) {
    Repository repository;
    auto& history = repository.history;
    history.changeHeadFiles({file("a", '1', 10), file("b", '2', 20)});
    history.noteStamps({{L"a", stampOf(10)}, {L"b", stampOf(21)}, {L"none", stampOf(1)}});
    EXPECT_EQ(history.headFile(L"a")->stamp, stampOf(10));
    EXPECT_EQ(history.headFile(L"b")->stamp, std::nullopt);
    history.noteStamps({{L"a", stampOf(11)}});
    EXPECT_EQ(history.headFile(L"a")->stamp, stampOf(10));
    history.noteStamps({{L"a", std::nullopt}});
    EXPECT_EQ(history.headFile(L"a")->stamp, std::nullopt);
}

TEST(HeadChanges, NameEachRowThatChangedSince) {
    Repository repository;
    auto& history = repository.history;
    const HeadChange first = history.lastHeadChange().value();
    EXPECT_THAT(pathsAfter(history, first), ElementsAre());
    history.changeHeadFiles({file("b", '2', 20), file("a", '1', 10)});
    const HeadChange second = history.lastHeadChange().value();
    history.changeHeadFiles({file("c", '2', 20, "b")});
    history.noteStamps({{L"a", stampOf(10)}});
    EXPECT_THAT(pathsAfter(history, first), ElementsAre("b", "a", "c", "b", "a"));
    EXPECT_THAT(pathsAfter(history, second), ElementsAre("c", "b", "a"));
    EXPECT_THAT(pathsAfter(history, *history.lastHeadChange()), ElementsAre());
}

TEST(HeadChanges, OfAnotherHistoryAreNone) {
    Repository repository;
    Repository other;
    for (Repository* each : {&repository, &other})
        each->history.changeHeadFiles({file("a", '1')});
    EXPECT_EQ(repository.history.headChangesAfter(*other.history.lastHeadChange()), std::nullopt);
    EXPECT_EQ(repository.history.headChangesAfter({3, 0}), std::nullopt);
    EXPECT_EQ(repository.history.headChangesAfter({0, 0}), std::nullopt);
}

TEST(HeadChanges, ThatWereTakenBackAreNoneOfThoseThatFollow) {
    Repository repository;
    auto& history = repository.history;
    HeadChange takenBack;
    {
        const qrv::DatabaseTransaction transaction(history.database());
        history.changeHeadFiles({file("a", '1')});
        takenBack = *history.lastHeadChange();
    }
    history.changeHeadFiles({file("b", '1')});
    EXPECT_EQ(history.lastHeadChange()->sequence, takenBack.sequence);
    EXPECT_EQ(history.headChangesAfter(takenBack), std::nullopt);
}

TEST(HeadChanges, AreForgottenButForTheLast) {
    Repository repository;
    auto& history = repository.history;
    history.changeHeadFiles(manyFiles(10));
    const HeadChange middle = *history.lastHeadChange();
    history.changeHeadFiles({removal("1"), removal("2")});
    history.forgetHeadChanges(middle.sequence);
    EXPECT_THAT(pathsAfter(history, middle), ElementsAre("1", "2"));
    const HeadChange last = *history.lastHeadChange();
    history.forgetHeadChanges(last.sequence + 100);
    EXPECT_EQ(history.headChangesAfter(middle), std::nullopt);
    EXPECT_EQ(history.lastHeadChange(), last);
    history.changeHeadFiles({removal("3")});
    EXPECT_THAT(pathsAfter(history, last), ElementsAre("3"));
}

TEST(HeadChanges, AreNotNamedWhenTheyAreMostFiles) {
    Repository repository;
    auto& history = repository.history;
    const HeadChange first = *history.lastHeadChange();
    history.changeHeadFiles(manyFiles(2000));
    EXPECT_EQ(history.headChangesAfter(first), std::nullopt);
    qrv::Statement rows = history.database().prepare("SELECT count(*) FROM head_changes");
    rows.step();
    EXPECT_EQ(rows.integer(0), 1);
    const HeadChange copied = *history.lastHeadChange();
    history.changeHeadFiles({removal("7")});
    EXPECT_THAT(pathsAfter(history, copied), ElementsAre("7"));
}

TEST(HeadChanges, AreNoMoreThanACopyIsWorth) {
    Repository repository;
    auto& history = repository.history;
    const HeadChange first = *history.lastHeadChange();
    const std::vector<FileDelta> deltas = manyFiles(2000);
    history.changeHeadFiles(deltas);
    EXPECT_EQ(history.headChangesAfter(first), std::nullopt);
    const HeadChange second = *history.lastHeadChange();
    for (int i = 0; i < 9; ++i)
        history.changeHeadFiles({deltas.begin(), deltas.begin() + 100});
    EXPECT_EQ(pathsAfter(history, second).size(), 900U);
    for (int i = 0; i < 15; ++i)
        history.changeHeadFiles({deltas.begin(), deltas.begin() + 100});
    EXPECT_EQ(history.headChangesAfter(second), std::nullopt);
}

TEST(HeadChanges, KeepACopyUpToDateThroughAnyChanges) {
    std::mt19937 random(1);
    Repository repository;
    auto& history = repository.history;
    std::map<std::string, std::string> copy;
    HeadChange seen = *history.lastHeadChange();
    const auto shown = [](const qrv::HeadFile& head) {
        return qrv_test::letterOf(head.file.contents) +
               (head.stamp ? std::to_string(head.stamp->modifiedNs) : "");
    };
    for (int round = 0; round < 300; ++round) {
        const std::string path(1, static_cast<char>('a' + random() % 6));
        const std::string other(1, static_cast<char>('g' + random() % 6));
        const std::int64_t time = random() % 3;
        if (random() % 3 == 0)
            history.noteStamps({{OdString::fromNarrow(path), stampOf(1, time)}});
        else if (random() % 3 == 0)
            history.changeHeadFiles({removal(path.c_str()), file(other.c_str(), '1')});
        else
            history.changeHeadFiles({file(path.c_str(), '2', 1, other.c_str())},
                                    [&](const OdString&) { return stampOf(1, time); });
        if (random() % 4 != 0)
            continue;
        for (const std::string& changed : pathsAfter(history, seen)) {
            copy.erase(changed);
            if (const auto head = history.headFile(OdString::fromNarrow(changed)))
                copy[changed] = shown(*head);
        }
        seen = *history.lastHeadChange();
        std::map<std::string, std::string> whole;
        history.visitHeadFiles(
            [&](const qrv::HeadFile& head) { whole[head.path.bytes()] = shown(head); });
        ASSERT_EQ(copy, whole) << round;
    }
}

}  // namespace
