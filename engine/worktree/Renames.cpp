#include <engine/paths/CheckedUrl.h>
#include <engine/worktree/Renames.h>
#include <engine/worktree/WorkingFile.h>

#include <algorithm>
#include <cstdint>

namespace qrv {

namespace {

using PathsBySize = std::multimap<std::int64_t, OdString>;

/// The removed file with those contents, or the end.
PathsBySize::iterator findPrevious(Workspace& workspace, std::int64_t sizeBytes,
                                   const OdString& digest, PathsBySize& removed) {
    const auto [begin, end] = removed.equal_range(sizeBytes);
    const auto found = std::find_if(begin, end, [&](const auto& candidate) {
        const Expected<CheckedUrl> url =
            CheckedUrl::check(workspace.history().headUrl(candidate.second));
        return url && digest == url->digest();
    });
    return found == end ? removed.end() : found;
}

}  // namespace

FoundRenames findRenames(Workspace& workspace, const std::vector<SizedFile>& newFiles,
                         const std::vector<SizedFile>& removed) {
    PathsBySize removedBySize;
    for (const SizedFile& file : removed)
        removedBySize.emplace(file.sizeBytes, file.path);
    FoundRenames found;
    for (const SizedFile& file : newFiles) {
        // All empty files are equal, which says nothing about where one came from.
        if (file.sizeBytes == 0 || !removedBySize.contains(file.sizeBytes))
            continue;
        const sys::Outcome<OdString> digest = tryDigestOfFile(workspace.folder(), file.path);
        if (!digest) {
            found.unseen.push_back({file.path, digest.error()});
            continue;
        }
        const auto previous = findPrevious(workspace, file.sizeBytes, *digest, removedBySize);
        if (previous == removedBySize.end())
            continue;
        found.renames.emplace(file.path, previous->second);
        removedBySize.erase(previous);
    }
    return found;
}

}  // namespace qrv
