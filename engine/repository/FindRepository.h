#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <engine/base/Caller.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <filesystem>
#include <optional>
#include <string>

namespace qrv {

/// The path as the library takes it.
OdString toText(const std::filesystem::path& path);

/// A repository and its root, which is open: all that the program itself reads and writes there, it
/// reaches beneath this one handle.
struct RepositoryPlace {
    common::RootPath root;
    sys::Folder folder;
};

/// The innermost repository among `folder`, an absolute path without links, and the folders above
/// it, if there is one. A folder or link that is called `.qrv` ends the search. Fails when that is
/// no metadata folder, or as `checkMetadata` does.
Expected<std::optional<RepositoryPlace>> enclosingRepository(const std::filesystem::path& folder);

/// The repository that holds the existing folder `folder`. Fails when that is no folder, or in no
/// repository, or in one of somebody else that the user does not trust (see Trust.h), or as
/// `checkMetadata` does.
Expected<RepositoryPlace> openRepository(const std::string& folder, const Caller& caller);
/// The same for what needs the path alone.
Expected<common::RootPath> findRepository(const std::string& folder, const Caller& caller);

}  // namespace qrv
