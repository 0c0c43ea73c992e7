#pragma once

#include <common/base/Expected.h>
#include <common/server/Reference.h>

namespace common {

/// "branch" or "tag". Any other value gives "Unsupported reftype", which is sent like a type, on
/// purpose.
OdString toString(RefType type);
/// From "branch" or "tag"; any other text is an error.
Expected<RefType> toRefType(const OdString& text);

}  // namespace common
