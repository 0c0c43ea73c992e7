#pragma once

#include <common/base/Expected.h>
#include <engine/base/DigestBytes.h>
#include <engine/paths/RelativePath.h>
#include <engine/storage/ObjectFolder.h>
#include <engine/storage/Packs.h>
#include <engine/storage/SimilarContents.h>
#include <sys/FileStamp.h>
#include <sys/Folder.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace qrv {

/// Where the contents of a working file go, and what is known of them before.
struct StoreRequest {
    Packs& packs;
    /// Of the same packs: what contents are kept against that continue nothing.
    SimilarContents& similar;
    /// The contents that these continue, if that is known.
    std::optional<DigestBytes> previous;
    /// How long contents and those that they continue may be together for a difference.
    std::int64_t longestSpan = 0;
    /// Whether contents are kept outside the packs, where they then count as new again.
    std::function<bool(const std::string& digest, std::int64_t sizeBytes)> isKeptElsewhere;
    /// Where objects lie that share their blocks with working files; null when there are none.
    ObjectFolder* sharing = nullptr;
};

/// The digest of the contents of a working file, and what the file was when they were read.
struct StoredContents {
    std::string digest;
    sys::FileStamp stamp;
};

/// Reads a working file and adds its contents to the pack that is being written, unless they are
/// kept already, or shares its blocks where that can be. A file that changes while it is read,
/// which its stamps before and after tell, is read once more; then it is an error.
///
/// Contents up to 16 MiB are held in memory, longer ones only together with what they continue, if
/// both fit; all others are read twice, piece by piece.
Expected<StoredContents> storeContents(const sys::Folder& root, const RelativePath& path,
                                       const StoreRequest& request);

}  // namespace qrv
