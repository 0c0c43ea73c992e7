#pragma once

#include <platform/kernel/OdString.h>

namespace ut {

/// True when the whole of `name` matches `pattern`: "*" stands for any units, "?" for one,
/// everything else for itself. Takes at most length times length steps.
bool matchesWildcards(const OdString& name, const OdString& pattern);

}  // namespace ut
