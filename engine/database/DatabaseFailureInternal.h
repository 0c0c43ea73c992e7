#pragma once

#include <platform/kernel/OdString.h>

struct sqlite3;

namespace qrv {

/// Throws the `DatabaseError` "The database '...' cannot be used: ...".
[[noreturn]] void failOnDatabase(const OdString& path, const OdString& cause);

/// Why the connection's last call failed.
OdString causeOf(sqlite3* connection);

}  // namespace qrv
