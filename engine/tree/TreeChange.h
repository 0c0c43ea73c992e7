#pragma once

#include <engine/paths/RelativePath.h>
#include <engine/tree/Tree.h>
#include <engine/tree/TreeFile.h>

#include <optional>
#include <vector>

namespace qrv {

/// A file that two trees do not have alike. At least one side is there.
struct TreeChange {
    RelativePath path;
    std::optional<TreeFile> before;
    std::optional<TreeFile> after;

    friend bool operator==(const TreeChange&, const TreeChange&) = default;
};

/// What two trees do not have alike, ordered by path.
std::vector<TreeChange> changesBetween(const Tree& before, const Tree& after);

}  // namespace qrv
