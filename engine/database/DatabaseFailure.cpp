#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/database/DatabaseFailureInternal.h>
#include <engine/database/Statement.h>

#include <sqlite3.h>

namespace qrv {

void failOnDatabase(const OdString& path, const OdString& cause) {
    throw DatabaseError(
        OdString::format(tr(L"The database '%ls' cannot be used: %ls"), printable(path), cause));
}

OdString causeOf(sqlite3* connection) {
    if (sqlite3_errcode(connection) == SQLITE_INTERRUPT)
        return tr(
            L"reading it takes more steps than a file of its size can need, so it is damaged, "
            L"or was made to do that");
    return OdString(sqlite3_errmsg(connection));
}

}  // namespace qrv
