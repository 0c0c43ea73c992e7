#pragma once

#include <engine/paths/RelativePath.h>
#include <engine/tree/Tree.h>
#include <engine/tree/TreeChange.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace qrv {

/// What a commit did to one file, compared with its first parent.
struct FileDelta {
    RelativePath path;
    /// The storage URL of the contents; empty when the file was removed.
    OdString url;
    /// The file's path before, when it was renamed.
    std::optional<RelativePath> previousPath;
    /// Of the contents; 0 when the file was removed.
    std::int64_t sizeBytes = 0;

    friend bool operator==(const FileDelta&, const FileDelta&) = default;
};

/// The deltas that do these changes, in the same order. They know of no renames.
std::vector<FileDelta> deltasOf(const std::vector<TreeChange>& changes);

/// The same deltas, ordered by path.
std::vector<const FileDelta*> orderedByPath(const std::vector<FileDelta>& deltas);

/// Makes the deltas part of the tree. Files that go although they are not there are no error.
void apply(std::vector<FileDelta> deltas, Tree& tree);

}  // namespace qrv
