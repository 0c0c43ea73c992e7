#pragma once

#include <engine/paths/RelativePath.h>
#include <engine/tree/TreeFile.h>

#include <optional>

namespace qrv {

/// A file that two trees do not have alike. At least one side is there.
struct TreeChange {
    RelativePath path;
    std::optional<TreeFile> before;
    std::optional<TreeFile> after;

    friend bool operator==(const TreeChange&, const TreeChange&) = default;
};

}  // namespace qrv
