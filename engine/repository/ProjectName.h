#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <engine/base/Caller.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <string>

namespace qrv {

/// For the parser of the arguments: empty, or what is wrong with `name`, UTF-8, as a project's
/// name. It stands in a file of one line, and a person reads it.
std::string refusalOfName(const std::string& name);

/// Writes `name`, which `refusalOfName` accepts, to the project's properties, beneath the root that
/// is open. Fails with a message that names the file when it cannot be written whole; the old name
/// stays then.
Expected<void> setProjectName(const std::string& name, const common::RootPath& root,
                              const sys::Folder& folder, const Caller& caller);

/// The name in the project's properties, without blanks and line ends around it; empty when there
/// is none. Whoever edited the file may have put any characters into it.
OdString projectName(const common::RootPath& root);

/// What to call the project: its name or, where it has none, that of its folder.
OdString displayName(const common::RootPath& root);

}  // namespace qrv
