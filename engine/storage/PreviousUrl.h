#pragma once

#include <platform/kernel/OdString.h>

#include <functional>

namespace qrv {

/// Gives the storage URL of the version that a working file continues (its own in HEAD, or the one
/// it was renamed from), or an empty text: new contents are kept against that version's, and a
/// drawing keeps the name of its store.
using PreviousUrl = std::function<OdString(const OdString& path)>;

}  // namespace qrv
