#pragma once

#include <engine/database/Database.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv {

/// Notes a change of no file, so that there always is a last one.
void beginHeadChanges(Database& database);

/// Notes that the rows of these files of HEAD changed, inside the transaction that changes them,
/// when it has done so. Of more changes than a copy of the files is worth only the last are kept.
void addHeadChanges(Database& database, const std::vector<OdString>& paths);

}  // namespace qrv
