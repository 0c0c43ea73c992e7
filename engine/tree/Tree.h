#pragma once

#include <platform/kernel/OdString.h>

#include <cstdint>
#include <map>

namespace qrv {

/// A file of a tree.
struct TreeFile {
    OdString url;
    std::int64_t sizeBytes = 0;

    friend bool operator==(const TreeFile&, const TreeFile&) = default;
};

/// A file without its contents.
struct SizedFile {
    OdString path;
    std::int64_t sizeBytes = 0;
};

/// Files by their paths: those of a commit, or of HEAD.
using Tree = std::map<OdString, TreeFile>;

}  // namespace qrv
