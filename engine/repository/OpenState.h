#pragma once

#include <common/base/Expected.h>
#include <common/repository/IoInterface.h>
#include <common/repository/RootPath.h>
#include <common/state/Cache.h>
#include <sys/Folder.h>

#include <memory>
#include <utility>

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

/// Reads the state of a repository; `host` must outlive it. Fails like `Cache::get`, in place of
/// its exception for a file that ends inside a text with a message, and as `checkMetadata` does
/// when somebody exchanged the file meanwhile.
Expected<std::shared_ptr<common::Cache>> openState(const common::RootPath& root,
                                                   const sys::Folder& folder, const Host& host);

}  // namespace qrv
