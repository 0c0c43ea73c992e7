#include "Changes.h"

#include <map>

namespace {

void append(std::vector<common::StatusRef>& changes, const std::vector<common::File>& files,
            common::FileChange change) {
    for (const common::File& file : files)
        changes.emplace_back(file.path, change);
}

}  // namespace

common::RepoChanges changesSince(const LastCommit& commit, const std::vector<common::File>& files,
                                 const common::RootPath& root) {
    common::RepoChanges result;
    std::map<OdString, OdString> missing = commit.urls;
    for (const common::File& file : files) {
        const auto committed = missing.extract(file.path);
        if (committed.empty())
            result.added.push_back(file);
        else if (common::isDifferent(file.path, committed.mapped(), root))
            result.modified.push_back(file);
        else
            result.unchanged.push_back({file.path, committed.mapped()});
    }
    for (const auto& [path, url] : missing)
        result.removed.emplace_back(path);

    append(result.changes, result.modified, common::FileChange::modified);
    append(result.changes, result.added, common::FileChange::added);
    append(result.changes, result.removed, common::FileChange::removed);
    return result;
}
