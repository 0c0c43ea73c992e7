#include <engine/base/Hex.h>
#include <engine/history/JournalEntry.h>
#include <engine/paths/CheckedUrl.h>
#include <tests/engine/history/Repository.h>
#include <tests/support/Files.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using qrv::Database;
using qrv::Statement;
using qrv_test::file;
using qrv_test::Repository;

std::string tables(Database& database) {
    Statement query =
        database.prepare("SELECT sql FROM sqlite_schema WHERE sql NOTNULL ORDER BY rowid");
    std::string text;
    while (query.step())
        text += query.text(0).toNarrow() + ";\n\n";
    return text;
}

/// Bytes are shown in digits.
std::string valueOf(const Statement& row, int column) {
    const std::string_view bytes = row.bytes(column);
    return row.isBlob(column) ? qrv::toHex(bytes) : std::string(bytes);
}

/// One line for each row of a table: its name and its values.
std::string rows(Database& database, const std::string& table, int columns,
                 const std::string& chosen = "*") {
    Statement query =
        database.prepare(("SELECT " + chosen + " FROM " + table + " ORDER BY 1, 2").c_str());
    std::string text;
    while (query.step()) {
        text += table;
        for (int column = 0; column < columns; ++column)
            text += " | " + valueOf(query, column);
        text += "\n";
    }
    return text;
}

std::string numberIn(Database& database, const char* sql) {
    Statement query = database.prepare(sql);
    query.step();
    return std::to_string(query.integer(0));
}

TEST(HistoryFormat, IsThatOfTheSample) {
    Repository repository;
    auto& history = repository.history;
    const OdString one = repository.add({}, "First plans", {file("a.txt", '1', 10)});
    qrv::FileDelta plan = file("plan.dwg", '3', 30);
    plan.url = qrv::drawingUrl(OdString(std::wstring(32, L'5')), OdString(std::wstring(64, L'3')));
    const OdString two = repository.add(
        {one}, "Move", {file("b.txt", '1', 10, "a.txt"), file("c.txt", '2', 20), plan});
    history.changeHeadFiles({file("b.txt", '1', 10), file("c.txt", '2', 20), plan});
    history.noteStamps({{L"c.txt", sys::FileStamp{.number = 7,
                                                  .sizeBytes = 20,
                                                  .modifiedNs = 1709647629000000000,
                                                  .changedNs = 1709647630000000000}}});
    history.setNote(qrv::headNote, two);
    history.setReference(L"master", common::RefType::Branch, two);
    history.setReference(L"v1", common::RefType::Tag, one);
    qrv::JournalEntry entry;
    entry.title = L"switch to 'side'";
    entry.branch = L"side";
    entry.commit = one;
    entry.steps = {{qrv_test::relative(L"b.txt"), qrv_test::url('1'), OdString(), 0},
                   {qrv_test::relative(L"c.txt"), qrv_test::url('2'), OdString(), 0}};
    noteEntry(history, entry);

    Database database(repository.root.dbPath(), Database::Access::readOnly);
    const std::string text =
        tables(database) + "application_id | " + numberIn(database, "PRAGMA application_id") +
        "\nuser_version | " + numberIn(database, "PRAGMA user_version") + "\n" +
        rows(database, "commits", 5) + rows(database, "parents", 3) + rows(database, "changes", 5) +
        rows(database, "refs", 3) + rows(database, "head_files", 6) +
        // The marks are random.
        rows(database, "head_changes", 2, "sequence, path") + rows(database, "lines", 2) +
        rows(database, "notes", 2) + rows(database, "plan", 5) + rows(database, "plan_files", 5);
    EXPECT_EQ(text, qrv_test::readFile(QRV_HISTORY_SAMPLES "/history.sample"));
}

}  // namespace
