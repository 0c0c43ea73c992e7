#pragma once

#include <engine/database/Database.h>
#include <engine/history/Commit.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <vector>

namespace qrv {

/// From this layout on the history notes sums of what no hash of a commit covers: of references and
/// notes, and of the sizes of files.
inline constexpr int layoutWithSums = 2;

/// How often references have changed. A copy of the history with a lower number is an older one.
std::int64_t generationOf(Database& database);

/// Notes one more change of a reference.
void countReferenceChange(Database& database);
void setGeneration(Database& database, std::int64_t generation);

/// Notes the sum of references and notes as they are now, inside the transaction of their change.
/// Does nothing in a file of an older layout, which has none.
void renewSum(Database& database);

/// Throws `DatabaseError` when references or notes are not those whose sum was noted. All is well
/// with a file of an older layout.
void checkSum(Database& database);

/// The sum of the sizes of all files, continued with one more commit, in the order of the numbers;
/// it begins with the empty text.
OdString continuedSizes(const OdString& sum, const OdString& commit,
                        const std::vector<FileDelta>& deltas);

/// What is noted of the sum of all sizes; empty before the first commit, and in an older layout.
OdString notedSizes(Database& database);
/// Notes one more commit, inside the transaction that adds it. Like `renewSum`.
void addSizes(Database& database, const OdString& commit, const std::vector<FileDelta>& deltas);
void setSizes(Database& database, const OdString& sum);

}  // namespace qrv
