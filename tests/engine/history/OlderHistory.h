#pragma once

#include <tests/engine/history/Repository.h>

#include <string>

namespace qrv_test {

/// The statement that makes the text of a packed URL in the column.
inline std::string urlText(const std::string& column) {
    const std::string digest = "lower(hex(substr(" + column + ", 2, 32)))";
    const std::string store = "substr(" + column + ", 34)";
    return "CASE hex(substr(" + column + ", 1, 1)) WHEN '' THEN '' WHEN '01' THEN 'po:' || " +
           digest + " WHEN '02' THEN 'tf:' || CAST(" + store + " AS TEXT) || '#' || " + digest +
           " ELSE 'tf:' || lower(hex(" + store + ")) || '#' || " + digest + " END";
}

/// Turns the history into what a program of layout 2 has written.
inline void makeLayout2(const Repository& repository) {
    repository.tamper(
        "DROP INDEX changes_by_path; DROP INDEX changes_by_previous_path;"
        "ALTER TABLE changes RENAME TO c; ALTER TABLE head_files RENAME TO h;"
        "ALTER TABLE plan_files RENAME TO p; DROP TABLE head_changes; DROP TABLE lines");
    repository.tamper(R"(CREATE TABLE changes (
    number INTEGER NOT NULL REFERENCES commits,
    path TEXT NOT NULL,
    url TEXT NOT NULL,
    previous_path TEXT NOT NULL,
    size INTEGER NOT NULL CHECK (size >= 0),
    PRIMARY KEY (number, path)
) STRICT, WITHOUT ROWID;
CREATE INDEX changes_by_path ON changes (path);
CREATE INDEX changes_by_previous_path ON changes (previous_path) WHERE previous_path <> '';
CREATE TABLE head_files (
    path TEXT PRIMARY KEY,
    url TEXT NOT NULL,
    size INTEGER NOT NULL CHECK (size >= 0)
) STRICT, WITHOUT ROWID;
CREATE TABLE plan_files (
    position INTEGER PRIMARY KEY,
    path TEXT NOT NULL,
    before TEXT NOT NULL,
    after TEXT NOT NULL,
    size INTEGER NOT NULL CHECK (size >= 0)
) STRICT;)");
    const std::string copy =
        "INSERT INTO changes SELECT number, path, " + urlText("url") +
        ", previous_path, size FROM c; INSERT INTO head_files SELECT path, " + urlText("url") +
        ", size FROM h; INSERT INTO plan_files SELECT position, path, " + urlText("before") + ", " +
        urlText("after") +
        ", size FROM p; DROP TABLE c; DROP TABLE h; DROP TABLE p; PRAGMA user_version = 2";
    repository.tamper(copy.c_str());
}

/// The same for layout 1, which had no sums.
inline void makeLayout1(const Repository& repository) {
    makeLayout2(repository);
    repository.tamper(
        "DELETE FROM notes WHERE name IN ('sum', 'sizes', 'generation'); "
        "PRAGMA user_version = 1");
}

}  // namespace qrv_test
