#pragma once

#include <engine/history/History.h>

namespace qrv {

/// Turns a history of an older layout into one of today's, in one transaction. Values that are
/// damaged are carried over as they are: who reads them is told, as before. Throws `DatabaseError`
/// when the file cannot be read or written; it is as it was then.
void upgrade(History& history);

}  // namespace qrv
