#pragma once

#include <engine/database/Database.h>
#include <engine/history/Commit.h>
#include <engine/paths/RelativePath.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <optional>

namespace qrv {

/// Throws the `DatabaseError` for a value that this program does not write.
[[noreturn]] void failDamaged(const Database& database, const OdString& cause);

/// Throws the `DatabaseError` for a value that is not to be written.
[[noreturn]] void failToKeep(const Database& database, const OdString& cause);

/// Throws the `DatabaseError` for a commit whose parent is not there, or not older.
[[noreturn]] void failBuildsOn(const Database& database, std::int64_t number, std::int64_t parent);

/// A value of a row of the history, distrusted: each of these throws `DatabaseError` when the
/// column, counted from 0, holds anything else than what it says.
class CheckedRow {
public:
    CheckedRow(const Database& database, const Statement& row) : database_(database), row_(row) {}

    RelativePath path(int column) const;
    /// A storage URL: packed bytes, or the text that older layouts have.
    OdString url(int column) const;
    /// A digest.
    OdString hash(int column) const;
    /// The number of a commit.
    std::int64_t number(int column) const;
    std::int64_t sizeBytes(int column) const;
    /// See `isTimeInRange`.
    std::int64_t timeSeconds(int column) const;
    /// Any text.
    OdString text(int column) const { return row_.text(column); }

    std::optional<RelativePath> pathIfAny(int column) const;
    OdString urlOrEmpty(int column) const;

private:
    bool isEmpty(int column) const { return row_.bytes(column).empty(); }

    const Database& database_;
    const Statement& row_;
};

/// A commit from a row of number, hash, author, message and time.
CommitEntry entryWithoutParents(const CheckedRow& row);

/// A delta from a row of path, URL, previous path and size.
FileDelta toDelta(const CheckedRow& row);

/// Throws `DatabaseError` for a delta that could not be read back.
void requireStorable(const Database& database, const FileDelta& delta);

/// Whether the second, counted from 1970, lies in the years 1 to 9999, which have one form as text.
bool isTimeInRange(std::int64_t timeSeconds);

/// The number of the commit. Throws `DatabaseError` when there is no such commit.
std::int64_t numberOf(Database& database, const OdString& hash);

}  // namespace qrv
