#pragma once

#include <engine/history/History.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <functional>
#include <string_view>

namespace qrv {

/// A version that a commit put at a path.
struct VersionRow {
    /// The path, and where the file was before when the commit renamed it, else nothing. Views into
    /// the row, as UTF-8.
    std::string_view path;
    std::string_view previousPath;
    OdString url;
    std::int64_t sizeBytes = 0;
};

/// Gives each version that the commit `number` names, ordered by path, without holding them: a
/// commit may have hundreds of thousands. Throws `DatabaseError`.
void visitVersions(History& history, std::int64_t number,
                   const std::function<void(const VersionRow&)>& visit);

}  // namespace qrv
