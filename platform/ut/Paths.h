#pragma once

#include <platform/kernel/Export.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace ut {

/// `path` with every slash made the system's separator. Where "/" is the only one, as on Linux, it
/// comes back unchanged: a backslash is an ordinary character of a name there.
QRV_PLATFORM_EXPORT OdString correctSlashes(const OdString& path);

/// The pieces of `text` between the separators, in order; with `keepEmpty` also the empty ones. An
/// empty text has no pieces, and an empty separator separates nothing.
QRV_PLATFORM_EXPORT std::vector<OdString> splitByChar(const OdString& text,
                                                      const OdString& separator, bool keepEmpty);

}  // namespace ut
