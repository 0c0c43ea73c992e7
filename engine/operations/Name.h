#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <platform/kernel/OdString.h>

#include <string>

namespace qrv {

/// A repository and its project's name.
struct NamedProject {
    /// Where it lies.
    common::RootPath root;
    /// Empty when it has none. Whoever edited the file may have put any characters into it.
    OdString name;
    /// What to call the project: its name or, where it has none, that of its folder.
    OdString displayName;
};

/// The name of the project whose repository holds `folder`. Fails when the repository cannot be
/// opened.
QRV_ENGINE_EXPORT Expected<NamedProject> projectIn(const std::string& folder, Caller& caller);

/// Gives the project another name. Fails for a name that is empty or more than one line of plain
/// text, and when the repository cannot be opened or the name not be written whole; the old name
/// stays then.
QRV_ENGINE_EXPORT Expected<NamedProject> renameProject(const std::string& folder,
                                                       const OdString& name, Caller& caller);

}  // namespace qrv
