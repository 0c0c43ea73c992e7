#include <engine/tree/FileDelta.h>

#include <algorithm>
#include <utility>

namespace qrv {

std::vector<FileDelta> deltasOf(const std::vector<TreeChange>& changes) {
    std::vector<FileDelta> deltas;
    deltas.reserve(changes.size());
    for (const TreeChange& change : changes) {
        const TreeFile file = change.after.value_or(TreeFile());
        deltas.push_back({change.path, file.contents, std::nullopt, file.sizeBytes});
    }
    return deltas;
}

std::vector<const FileDelta*> orderedByPath(const std::vector<FileDelta>& deltas) {
    std::vector<const FileDelta*> ordered;
    ordered.reserve(deltas.size());
    for (const FileDelta& delta : deltas)
        ordered.push_back(&delta);
    std::sort(ordered.begin(), ordered.end(),
              [](const FileDelta* one, const FileDelta* other) { return one->path < other->path; });
    return ordered;
}

void apply(std::vector<FileDelta> deltas, Tree& tree) {
    // First all that go: a new file may have the name that a renamed one had.
    for (const FileDelta& delta : deltas) {
        if (delta.url.isEmpty())
            tree.erase(delta.path);
        if (delta.previousPath)
            tree.erase(*delta.previousPath);
    }
    for (FileDelta& delta : deltas) {
        if (!delta.url.isEmpty())
            tree.insert_or_assign(tree.end(), std::move(delta.path),
                                  TreeFile{std::move(delta.url), delta.sizeBytes});
    }
}

}  // namespace qrv
