#pragma once

#include <common/base/Expected.h>
#include <engine/base/Bytes.h>
#include <engine/storage/FrameReader.h>
#include <engine/storage/PackSource.h>
#include <engine/storage/VersionReader.h>

#include <cstdint>
#include <memory>

namespace qrv {

/// Reads contents out of the blocks of packs. Remembers the last block that several contents share,
/// so that whoever reads these one after the other decodes it once.
class BlockReader {
public:
    /// `base` holds what a difference was made against; null for other kinds. Fails when the block
    /// cannot be whole or cannot be read; memory for it is taken only after that.
    Expected<std::unique_ptr<VersionReader>> open(const PackedContents& contents,
                                                  std::shared_ptr<const Bytes> base,
                                                  FrameReader::Check check);

private:
    Expected<std::shared_ptr<const Bytes>> sharedBlock(const PackedContents& contents);

    std::shared_ptr<const PackSource> lastSource_;
    std::int64_t lastOffset_ = 0;
    std::shared_ptr<const Bytes> lastBlock_;
};

}  // namespace qrv
