#include <cli/safety/StorageUrlCheck.h>
#include <cli/worktree/Renames.h>
#include <cli/worktree/WorkingFile.h>

#include <algorithm>
#include <cstdint>

namespace qrv_cli {

namespace {

using PathsBySize = std::multimap<std::int64_t, OdString>;

/// The removed file with the contents of the new one, or the end.
PathsBySize::iterator findPrevious(Workspace& workspace, const SizedFile& file,
                                   PathsBySize& removed) {
    const auto [begin, end] = removed.equal_range(file.sizeBytes);
    if (begin == end)
        return removed.end();
    const Expected<OdString> digest = digestOfFile(workspace.folder(), file.path);
    const auto found = std::find_if(begin, end, [&](const auto& candidate) {
        const Expected<CheckedUrl> url =
            CheckedUrl::check(workspace.history().headUrl(candidate.second));
        return digest && url && *digest == url->digest();
    });
    return found == end ? removed.end() : found;
}

}  // namespace

std::map<OdString, OdString> findRenames(Workspace& workspace,
                                         const std::vector<SizedFile>& newFiles,
                                         const std::vector<SizedFile>& removed) {
    PathsBySize removedBySize;
    for (const SizedFile& file : removed)
        removedBySize.emplace(file.sizeBytes, file.path);
    std::map<OdString, OdString> renames;
    for (const SizedFile& file : newFiles) {
        if (removedBySize.empty())
            break;
        // All empty files are equal, which says nothing about where one came from.
        if (file.sizeBytes == 0)
            continue;
        const auto previous = findPrevious(workspace, file, removedBySize);
        if (previous == removedBySize.end())
            continue;
        renames.emplace(file.path, previous->second);
        removedBySize.erase(previous);
    }
    return renames;
}

}  // namespace qrv_cli
