#pragma once

#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>

namespace qrv {

/// The name, if a branch or a tag may have it. Refused is what could be taken for something else in
/// a command (a number, a hash, "HEAD", an option, a range), what a terminal does not show as it
/// is, and what is longer than 200 units. Fails with a message that names it and the reason.
Expected<OdString> checkedReferenceName(const OdString& name);

}  // namespace qrv
