#include <common/state/Cache.h>
#include <common/state/Index.h>
#include <platform/ut/DateTime.h>
#include <platform/ut/FileName.h>

#include <algorithm>

namespace common {

std::map<OdString, IndexData>::iterator openForWrite(
    const std::map<OdString, IndexData>::const_iterator& entry, Cache& cache) {
    // Erasing an empty range turns a constant iterator into a mutable one without a search.
    return cache.write().index.erase(entry, entry);
}

void updateIndex(const OdString& path, Cache& cache, const RootPath& root, bool modified) {
    const std::int64_t time = modifyTime(path, root);
    cache.write().index.insert_or_assign(path, IndexData{time, modified});
}

void removeIndex(const OdString& path, Cache& cache) {
    cache.write().index.erase(path);
}

void updateIndex(Cache& cache, const RootPath& root) {
    for (const StagedFile& staged : cache.read().stagedFiles) {
        if (staged.change == FileChange::removed)
            removeIndex(staged.path, cache);
        else
            updateIndex(staged.path, cache, root, false);
    }
}

std::int64_t modifyTime(const OdString& path, const RootPath& root) {
    ut::DateTime modification;
    ut::FileName(root.pathTo(path)).getTimes(nullptr, &modification, nullptr);
    return modification.getTicks();
}

void updateConflictData(Cache& cache, const ConflictData& conflict) {
    std::vector<ConflictData>& conflicts = cache.write().conflicts;
    const auto samePath = [&conflict](const ConflictData& other) {
        return other.path == conflict.path;
    };
    const auto found = std::find_if(conflicts.begin(), conflicts.end(), samePath);
    if (found == conflicts.end())
        conflicts.push_back(conflict);
    else
        *found = conflict;
}

}  // namespace common
