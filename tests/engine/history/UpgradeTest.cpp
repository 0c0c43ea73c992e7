#include <engine/history/HistoryCheck.h>
#include <engine/history/JournalEntry.h>
#include <engine/paths/CheckedUrl.h>
#include <tests/engine/history/OlderHistory.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using qrv::Database;
using qrv::History;
using qrv_test::file;
using qrv_test::removal;
using qrv_test::Repository;
using testing::IsEmpty;

OdString urlOfDrawing(const OdString& store) {
    return qrv::drawingUrl(store, OdString(std::wstring(64, L'd')));
}

/// Two commits with each form of a URL, and an entry of the journal.
struct Sound : Repository {
    Sound() {
        qrv::FileDelta usual = file("usual.dwg", '1', 20);
        usual.url = urlOfDrawing(OdString(std::wstring(32, L'5')));
        qrv::FileDelta named = file("named.dwg", '1', 30);
        named.url = urlOfDrawing(L"Plan-1");
        one = add({}, "one", {file("a", '1', 10), usual, named});
        two = add({one}, "two", {file("b", '1', 10, "a"), removal("named.dwg")});
        history.changeHeadFiles({file("b", '1', 10), usual});
        history.setNote(qrv::headNote, two);
        history.setReference(L"master", common::RefType::Branch, two);
        qrv::JournalEntry entry;
        entry.title = L"t";
        entry.steps = {{qrv_test::relative(L"usual.dwg"), usual.url, OdString(), 0}};
        noteEntry(history, entry);
    }
    std::string said() { return said(history); }
    /// What the history says of all that has URLs.
    std::string said(History& of) const {
        std::string text;
        for (const OdString& hash : {one, two}) {
            for (const qrv::FileDelta& delta : of.deltas(hash))
                text += delta.path.bytes() + " " + delta.url.toNarrow() + " " +
                        std::to_string(delta.sizeBytes) + "\n";
        }
        for (const auto& [path, head] : of.headFiles())
            text += path.bytes() + " " + head.contents.toNarrow() + "\n";
        const qrv::JournalEntry entry = notedEntry(of).value();
        for (const qrv::TreeStep& step : entry.steps)
            text += step.path.bytes() + " " + step.before.toNarrow() + step.after.toNarrow() + "\n";
        EXPECT_TRUE(of.hasVersion(L"a", qrv_test::url('1')));
        EXPECT_FALSE(of.hasVersion(L"a", qrv_test::url('2')));
        return text;
    }
    std::string bytes() const { return qrv_test::readFile(folder / ".qrv/qrv.db"); }

    OdString one;
    OdString two;
};

class Upgrade : public testing::TestWithParam<void (*)(const Repository&)> {};

TEST_P(Upgrade, IsNotNeededToReadAnOlderHistory) {
    Sound repository;
    const std::string said = repository.said();
    GetParam()(repository);
    const std::string before = repository.bytes();
    {
        History look = History::open(repository.root, Database::Access::readOnly);
        EXPECT_EQ(repository.said(look), said);
        EXPECT_THAT(problemsOf(look), IsEmpty());
        EXPECT_EQ(look.lastHeadChange(), std::nullopt);
        EXPECT_EQ(look.headChangesAfter({1, 1}), std::nullopt);
        EXPECT_EQ(look.headFile(L"b")->stamp, std::nullopt);
    }
    EXPECT_EQ(repository.bytes(), before);
}

TEST_P(Upgrade, KeepsAllThatTheHistorySays) {
    Sound repository;
    const std::string said = repository.said();
    GetParam()(repository);
    History history = History::open(repository.root, Database::Access::create);
    EXPECT_EQ(history.database().schemaVersion(), 3);
    EXPECT_EQ(repository.said(history), said);
    EXPECT_THAT(problemsOf(history), IsEmpty());
    EXPECT_NE(history.lastHeadChange(), std::nullopt);
    history.changeHeadFiles({file("b", '2', 20)});
    EXPECT_EQ(history.headUrl(L"b"), qrv_test::url('2'));
}

TEST_P(Upgrade, CarriesOverWhatIsDamaged) {
    Sound repository;
    GetParam()(repository);
    repository.tamper("UPDATE changes SET url = 'po:../x' WHERE path = 'b'");
    for (const Database::Access access : {Database::Access::readOnly, Database::Access::create}) {
        EXPECT_EQ(repository.complaint(
                      [&] { History::open(repository.root, access).deltas(repository.two); }),
                  "The history 'DB' is damaged: 'po:../x' does not name a stored version");
    }
    History history = History::open(repository.root, Database::Access::create);
    EXPECT_EQ(history.deltas(repository.one).size(), 3U);
}

INSTANTIATE_TEST_SUITE_P(OfEachLayout, Upgrade,
                         testing::Values(qrv_test::makeLayout1, qrv_test::makeLayout2));

}  // namespace
