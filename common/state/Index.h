#pragma once

#include <common/base/Export.h>
#include <common/repository/RootPath.h>
#include <common/state/State.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <map>

namespace common {

class Cache;

// Changes to the index and to the conflicts of a cache. Paths are relative to the repository's root
// and are compared exactly. Each of these marks the cache as changed, unless it says otherwise.

/// The same element for changing. `entry` must come from the index of `cache.read()`; its end is
/// allowed.
QRV_COMMON_EXPORT std::map<OdString, IndexData>::iterator openForWrite(
    const std::map<OdString, IndexData>::const_iterator& entry, Cache& cache);

/// Notes the file's present time of modification (0 when it cannot be read) and the caller's
/// verdict, in a new entry or the old one.
QRV_COMMON_EXPORT void updateIndex(const OdString& path, Cache& cache, const RootPath& root,
                                   bool modified);

/// Removes the entry, if there is one.
QRV_COMMON_EXPORT void removeIndex(const OdString& path, Cache& cache);

/// Brings the index up to date after a commit of the staged files: a removed file loses its entry,
/// every other one is noted as not modified. The staged files stay. Without any, the cache is not
/// marked.
QRV_COMMON_EXPORT void updateIndex(Cache& cache, const RootPath& root);

/// The file's time of modification in ticks of `ut::DateTime`; 0 when it cannot be read. Changes
/// nothing.
QRV_COMMON_EXPORT std::int64_t modifyTime(const OdString& path, const RootPath& root);

/// Replaces the first conflict of the same path by `conflict`, in its place, or adds it at the end.
QRV_COMMON_EXPORT void updateConflictData(Cache& cache, const ConflictData& conflict);

}  // namespace common
