#pragma once

#include <common/base/ErrorMessage.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv {

/// An error that names files, one a line below the heading.
ErrorMessage withPaths(const OdString& heading, const std::vector<OdString>& paths);

}  // namespace qrv
