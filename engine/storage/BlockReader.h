#pragma once

#include <common/base/Expected.h>
#include <engine/base/Bytes.h>
#include <engine/storage/FrameReader.h>
#include <engine/storage/PackSource.h>
#include <engine/storage/VersionReader.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace qrv {

/// Reads contents out of the blocks of packs. Remembers the last few blocks that several contents
/// share, so that whoever reads these one after the other, or version by version, decodes each
/// once.
class BlockReader {
public:
    /// `base` holds what a difference was made against; null for other kinds. Fails when the block
    /// cannot be whole or cannot be read; memory for it is taken only after that.
    Expected<std::unique_ptr<VersionReader>> open(const PackedContents& contents,
                                                  std::shared_ptr<const Bytes> base,
                                                  FrameReader::Check check);

private:
    Expected<std::shared_ptr<const Bytes>> sharedBlock(const PackedContents& contents);

    struct SharedBlock {
        std::shared_ptr<const PackSource> source;
        std::int64_t offset = 0;
        std::shared_ptr<const Bytes> contents;
    };

    // The one that was used last comes first.
    std::vector<SharedBlock> lastBlocks_;
};

}  // namespace qrv
