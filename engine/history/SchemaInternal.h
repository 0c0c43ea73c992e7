#pragma once

#include <engine/database/Database.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv {

/// From this layout on URLs are kept as `packedUrl` has them, beside each file of HEAD what a look
/// at it said, and of each commit its line.
inline constexpr int layoutWithPackedUrls = 3;

/// Whether the file holds nothing yet. Throws `DatabaseError` when it is no history, one of a newer
/// program, or one whose tables and indexes are not exactly ours.
bool isEmptyHistory(Database& database);

/// Makes the tables, unless they are there, in one transaction.
void makeHistory(Database& database);

/// Makes the tables and indexes that layout 3 has in another form than the layouts before, without
/// files. Runs inside a transaction, and none of those names may be taken.
void makePackedTables(Database& database);

/// How the tables and indexes of the file differ from ours, one text for each.
std::vector<OdString> differencesOfSchema(Database& database);

}  // namespace qrv
