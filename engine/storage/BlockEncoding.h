#pragma once

#include <common/base/Expected.h>
#include <engine/base/Bytes.h>
#include <engine/base/DigestBytes.h>
#include <engine/storage/PackRows.h>
#include <engine/storage/Zstd.h>

#include <cstdint>
#include <optional>
#include <span>

namespace qrv {

/// What new contents are to be kept against: contents that lie in a pack.
struct DifferenceBase {
    DigestBytes digest = {};
    std::span<const char> contents;
    /// Of the block that builds on it.
    std::uint8_t depth = 2;
    /// Of the block that builds on it, too.
    std::uint8_t roundStart = 1;
};

/// What goes into the file for a block.
struct EncodedBlock {
    BlockKind kind = BlockKind::raw;
    /// Empty for contents that are kept as they are.
    Bytes bytes;
};

/// As a frame, or as they are where a look at some of them, or the frame, says that a frame does
/// not pay. Fails when there is not enough memory.
Expected<EncodedBlock> encodeAlone(std::span<const char> contents, Effort effort);

/// As a difference, or nothing when that saves less than a tenth of what the contents take alone.
/// Fails when there is not enough memory.
Expected<std::optional<EncodedBlock>> encodeDifference(std::span<const char> contents,
                                                       std::span<const char> base, Effort effort);

/// Whether compressing contents that begin so would pay, as far as a few samples of them tell.
bool isWorthCompressing(std::span<const char> contents);

}  // namespace qrv
