#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <platform/kernel/OdString.h>

namespace common {

/// What the library asks and tells its host about files. The host implements it; an object must
/// outlive every cache and configuration made with it, since their destructors call it. Calls
/// arrive on the thread that destroys those or that merges.
class QRV_COMMON_EXPORT IoInterface {
public:
    virtual ~IoInterface();
    /// Whether a merge is to bring `path` into the working tree; with false it does nothing.
    virtual bool acceptsPath(const OdString& path) const = 0;
    /// Not called by the library; does nothing unless the host overrides it.
    virtual void reserved() const;
    /// Told once for each deferred write of a file of the library, right after it was tried:
    /// success, or why it failed. Called from a destructor, so it must not throw.
    virtual void reportResult(Expected<void> result) const = 0;
};

/// A reference to an `IoInterface` that is passed on; owns nothing.
class QRV_COMMON_EXPORT IoInterfaceRef {
public:
    /// `io` must outlive the reference and its copies.
    explicit IoInterfaceRef(const IoInterface& io) : io_(&io) {}
    /// What it refers to.
    const IoInterface& get() const { return *io_; }

private:
    const IoInterface* io_;
};

}  // namespace common
