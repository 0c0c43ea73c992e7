#include <engine/history/JournalEntry.h>
#include <tests/engine/history/Repository.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using qrv::forgetEntry;
using qrv::JournalEntry;
using qrv::notedEntry;
using qrv::noteEntry;
using qrv_test::relative;
using qrv_test::Repository;
using qrv_test::url;

JournalEntry exampleEntry() {
    JournalEntry entry;
    entry.title = L"switch to 'side'";
    entry.recovery = JournalEntry::Recovery::rollBack;
    entry.branch = L"side";
    entry.commit = OdString(std::wstring(64, L'a'));
    entry.steps = {{relative(L"z"), url('1'), url('2'), 20},
                   {relative(L"a"), OdString(), url('3'), 30},
                   {relative(L"b"), url('4'), OdString(), 0}};
    return entry;
}

TEST(JournalEntry, ComesBackAsItWasNoted) {
    Repository repository;
    EXPECT_EQ(notedEntry(repository.history), std::nullopt);
    noteEntry(repository.history, exampleEntry());
    auto reader = qrv::History::open(repository.root, qrv::Database::Access::readOnly);
    EXPECT_EQ(notedEntry(reader), exampleEntry());
}

TEST(JournalEntry, IsReplacedByAnotherOne) {
    Repository repository;
    noteEntry(repository.history, exampleEntry());
    JournalEntry other;
    other.title = L"restore";
    other.steps = {{relative(L"c"), url('5'), url('6'), 7}};
    noteEntry(repository.history, other);
    EXPECT_EQ(notedEntry(repository.history), other);
    noteEntry(repository.history, JournalEntry());
    EXPECT_EQ(notedEntry(repository.history), JournalEntry());
}

TEST(JournalEntry, IsForgotten) {
    Repository repository;
    forgetEntry(repository.history);
    noteEntry(repository.history, exampleEntry());
    forgetEntry(repository.history);
    EXPECT_EQ(notedEntry(repository.history), std::nullopt);
    noteEntry(repository.history, JournalEntry());
    EXPECT_EQ(notedEntry(repository.history), JournalEntry());
}

TEST(JournalEntry, ThatCouldNotBeReadBackIsRefusedAndTheOldOneStays) {
    Repository repository;
    noteEntry(repository.history, exampleEntry());
    const auto complaint = [&](const JournalEntry& entry) {
        return repository.complaint([&] { noteEntry(repository.history, entry); });
    };
    JournalEntry entry = exampleEntry();
    entry.branch = L"a b";
    EXPECT_EQ(complaint(entry),
              "The history 'DB' cannot keep this: 'a b' cannot be the name of a branch or tag: it "
              "has a blank in it");
    entry = exampleEntry();
    entry.commit = L"abc";
    EXPECT_EQ(complaint(entry), "The history 'DB' cannot keep this: 'abc' is no hash");
    entry = exampleEntry();
    entry.steps[1].before = L"x";
    EXPECT_EQ(complaint(entry),
              "The history 'DB' cannot keep this: 'x' does not name a stored version");
    EXPECT_EQ(notedEntry(repository.history), exampleEntry());
}

TEST(JournalEntry, ThatWasChangedByHandIsRefused) {
    struct Case {
        const char* tampering;
        std::string complaint;
    };
    const Case cases[] = {
        {"UPDATE plan SET branch = '-x'",
         "'-x' cannot be the name of a branch or tag: it begins like an option"},
        {"UPDATE plan SET commit_hash = '../x'", "'../x' is no hash"},
        {"UPDATE plan SET recovery = 2", "2 is no kind of recovery"},
        {"UPDATE plan_files SET path = '/a' WHERE position = 1",
         "'/a' cannot be used as a path: it is not relative"},
        {"UPDATE plan_files SET before = x'78' WHERE position = 1",
         "'x' does not name a stored version"},
        {"UPDATE plan_files SET after = x'78' WHERE position = 1",
         "'x' does not name a stored version"},
        {"UPDATE plan_files SET size = -1 WHERE position = 1", "-1 is no size of a file"},
    };
    for (const Case& each : cases) {
        Repository repository;
        noteEntry(repository.history, exampleEntry());
        repository.tamper(each.tampering);
        EXPECT_EQ(repository.complaint([&] { notedEntry(repository.history); }),
                  "The history 'DB' is damaged: " + each.complaint)
            << each.tampering;
    }
}

}  // namespace
