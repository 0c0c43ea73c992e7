#include <engine/base/Digest.h>
#include <engine/base/Translation.h>
#include <engine/history/RowsInternal.h>
#include <engine/history/SumsInternal.h>

#include <charconv>
#include <string>
#include <string_view>

namespace qrv {

namespace {

constexpr const wchar_t* generationNote = L"generation";
constexpr const wchar_t* sizesNote = L"sizes";
constexpr const wchar_t* sumNote = L"sum";

bool hasSums(Database& database) {
    return database.schemaVersion() >= layoutWithSums;
}

OdString textOf(Database& database, const wchar_t* note) {
    Statement query = database.prepare("SELECT text FROM notes WHERE name = ?");
    query.bind(OdString(note));
    return query.step() ? query.text(0) : OdString();
}

void setText(Database& database, const wchar_t* note, const OdString& text) {
    database.prepare("INSERT OR REPLACE INTO notes VALUES (?, ?)").run(OdString(note), text);
}

/// With its length before it, so that no two lists of texts are one sequence of bytes.
void addText(Digest& digest, std::string_view text) {
    digest.add(std::to_string(text.size()) + ':');
    digest.add(text);
}

struct Sums {
    OdString noted;
    OdString found;
};

/// One statement sees the file at one moment, also while another process writes.
Sums sumsOf(Database& database) {
    Statement rows = database.prepare(
        "SELECT 1 AS kind, type AS one, name AS two, CAST(number AS TEXT) FROM refs "
        "UNION ALL SELECT 2, name, text, '' FROM notes ORDER BY kind, one, two");
    Sums sums;
    Digest digest;
    while (rows.step()) {
        if (rows.integer(0) == 2 && rows.text(1) == OdString(sumNote)) {
            sums.noted = rows.text(2);
            continue;
        }
        for (int column = 0; column < 4; ++column)
            addText(digest, rows.bytes(column));
    }
    sums.found = OdString::fromNarrow(digest.finish());
    return sums;
}

}  // namespace

std::int64_t generationOf(Database& database) {
    const std::string digits = textOf(database, generationNote).toNarrow();
    std::int64_t generation = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), generation);
    return generation;
}

void setGeneration(Database& database, std::int64_t generation) {
    if (hasSums(database))
        setText(database, generationNote, OdString(std::to_string(generation).c_str()));
}

void countReferenceChange(Database& database) {
    setGeneration(database, generationOf(database) + 1);
}

void renewSum(Database& database) {
    if (hasSums(database))
        setText(database, sumNote, sumsOf(database).found);
}

void checkSum(Database& database) {
    const Sums sums = sumsOf(database);
    const bool isExpected = hasSums(database);
    if (isExpected ? sums.noted != sums.found : !sums.noted.isEmpty())
        failDamaged(database, tr(L"its branches, tags or notes are not those that were written "
                                 L"(qrv recover --history takes those that were recorded)"));
}

OdString continuedSizes(const OdString& sum, const OdString& commit,
                        const std::vector<FileDelta>& deltas) {
    Digest digest;
    addText(digest, sum.toNarrow());
    addText(digest, commit.toNarrow());
    for (const FileDelta* delta : orderedByPath(deltas)) {
        addText(digest, delta->path.bytes());
        addText(digest, std::to_string(delta->sizeBytes));
    }
    return OdString::fromNarrow(digest.finish());
}

OdString notedSizes(Database& database) {
    return textOf(database, sizesNote);
}

void addSizes(Database& database, const OdString& commit, const std::vector<FileDelta>& deltas) {
    setSizes(database, continuedSizes(notedSizes(database), commit, deltas));
}

void setSizes(Database& database, const OdString& sum) {
    if (!hasSums(database))
        return;
    setText(database, sizesNote, sum);
    renewSum(database);
}

}  // namespace qrv
