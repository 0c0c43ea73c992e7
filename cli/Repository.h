#pragma once

#include <common/base/Expected.h>
#include <common/repository/IoInterface.h>
#include <common/repository/RootPath.h>
#include <common/state/Cache.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace qrv_cli {

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

/// The innermost repository among `folder`, an absolute path without links, and the folders above
/// it.
std::optional<common::RootPath> enclosingRepository(std::filesystem::path folder);

/// The repository that holds the existing folder `folder`. Fails when that is no folder, or in no
/// repository.
Expected<common::RootPath> findRepository(const std::string& folder);

/// Reads the state of a repository; `host` must outlive it. Fails like `Cache::get`, and in place
/// of its exception for a file that ends inside a text with a message.
Expected<std::shared_ptr<common::Cache>> openState(const common::RootPath& root, const Host& host);

}  // namespace qrv_cli
