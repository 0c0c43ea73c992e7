#pragma once

#include <engine/base/Digest.h>
#include <platform/kernel/OdString.h>

#include <cstdint>

namespace qrv {

/// The contents of a file of a tree.
struct TreeFile {
    /// The storage URL of the contents; of such as only a working file has, their digest alone.
    OdString contents;
    /// Of the contents.
    std::int64_t sizeBytes = 0;

    /// Whether the contents are kept under a storage URL.
    bool isStored() const { return contents.find(L':') >= 0; }
    /// The digest of the contents, with which a storage URL ends.
    OdString digest() const { return contents.right(static_cast<int>(digestLength)); }
    /// Whether the contents are the same, wherever they are.
    bool hasSameContents(const TreeFile& other) const {
        return contents == other.contents ||
               (sizeBytes == other.sizeBytes && digest() == other.digest());
    }

    /// Also in the same place.
    friend bool operator==(const TreeFile&, const TreeFile&) = default;
};

}  // namespace qrv
