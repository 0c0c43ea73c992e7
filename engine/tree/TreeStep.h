#pragma once

#include <engine/paths/RelativePath.h>
#include <engine/tree/TreeChange.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <vector>

namespace qrv {

/// One step from a tree to another one: a file goes from one version to another.
struct TreeStep {
    RelativePath path;
    /// The storage URL of what lies there before; empty when nothing does.
    OdString before;
    /// Of what is to lie there; empty when the file is to go.
    OdString after;
    /// Of what is to lie there.
    std::int64_t sizeBytes = 0;

    friend bool operator==(const TreeStep&, const TreeStep&) = default;
};

/// The steps that do these changes, in the same order.
std::vector<TreeStep> stepsOf(const std::vector<TreeChange>& changes);

/// Of the files that the steps change, in the same order.
std::vector<OdString> pathsOf(const std::vector<TreeStep>& steps);

}  // namespace qrv
