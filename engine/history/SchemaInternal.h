#pragma once

#include <engine/database/Database.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv {

/// Whether the file holds nothing yet. Throws `DatabaseError` when it is no history, one of a newer
/// program, or one whose tables and indexes are not exactly ours.
bool isEmptyHistory(Database& database);

/// Makes the tables, unless they are there, in one transaction.
void makeHistory(Database& database);

/// How the tables and indexes of the file differ from ours, one text for each.
std::vector<OdString> differencesOfSchema(Database& database);

}  // namespace qrv
