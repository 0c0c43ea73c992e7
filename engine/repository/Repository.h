#pragma once

#include <common/base/Expected.h>
#include <common/repository/IoInterface.h>
#include <common/repository/RootPath.h>
#include <common/state/Cache.h>
#include <engine/base/Caller.h>
#include <sys/Folder.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace qrv {

/// Remembers how the library's last write ended.
class Host : public common::IoInterface {
public:
    bool acceptsPath(const OdString&) const override { return true; }
    void reportResult(Expected<void> result) const override { lastWrite_ = std::move(result); }

    /// Success when nothing was written.
    const Expected<void>& lastWrite() const { return lastWrite_; }

private:
    mutable Expected<void> lastWrite_;
};

/// The path as the library takes it.
OdString toText(const std::filesystem::path& path);

/// A repository and its root, which is open: all that the program itself reads and writes there, it
/// reaches beneath this one handle.
struct OpenRepository {
    common::RootPath root;
    sys::Folder folder;
};

/// The innermost repository among `folder`, an absolute path without links, and the folders above
/// it, if there is one. A folder or link that is called `.qrv` ends the search. Fails when that is
/// no metadata folder, or as `checkMetadata` does.
Expected<std::optional<OpenRepository>> enclosingRepository(const std::filesystem::path& folder);

/// The repository that holds the existing folder `folder`. Fails when that is no folder, or in no
/// repository, or in one of somebody else that the user does not trust (see Trust.h), or as
/// `checkMetadata` does.
Expected<OpenRepository> openRepository(const std::string& folder, const Caller& caller);
/// The same for what needs the path alone.
Expected<common::RootPath> findRepository(const std::string& folder, const Caller& caller);

/// Reads the state of a repository; `host` must outlive it. Fails like `Cache::get`, in place of
/// its exception for a file that ends inside a text with a message, and as `checkMetadata` does
/// when somebody exchanged the file meanwhile.
Expected<std::shared_ptr<common::Cache>> openState(const common::RootPath& root,
                                                   const sys::Folder& folder, const Host& host);

}  // namespace qrv
