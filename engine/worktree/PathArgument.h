#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <platform/kernel/OdString.h>

#include <string>

namespace qrv {

/// The path that a person typed, relative to the root; empty for the root itself. The file need not
/// exist. Fails, with a message that names it, when it lies outside the repository.
Expected<OdString> pathInRepository(const common::RootPath& root, const std::string& argument);

}  // namespace qrv
