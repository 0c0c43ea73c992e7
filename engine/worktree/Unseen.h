#pragma once

#include <engine/base/Export.h>
#include <platform/kernel/OdString.h>

#include <system_error>
#include <vector>

namespace qrv {

/// A file or folder of the working tree that could not be looked at. Nothing is known of it, nor of
/// what may lie below: it may hold everything, so it is not removed.
struct Unseen {
    /// Relative to the root; empty for the root itself.
    OdString path;
    /// What the system said.
    std::error_code cause;
};

/// In order, each path once, without those that lie below another one.
std::vector<Unseen> sortedUnseen(std::vector<Unseen> unseen);

/// Whether `path` is one of them or lies below one. They are in order.
bool isUnseen(const OdString& path, const std::vector<Unseen>& unseen);

/// "path: cause", for a person.
QRV_ENGINE_EXPORT OdString textOf(const Unseen& unseen);

}  // namespace qrv
