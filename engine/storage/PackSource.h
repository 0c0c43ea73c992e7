#pragma once

#include <common/base/ErrorMessage.h>
#include <engine/base/DigestBytes.h>
#include <engine/storage/PackRows.h>
#include <platform/kernel/OdString.h>
#include <sys/InputFile.h>

#include <cstdint>
#include <memory>
#include <optional>

namespace qrv {

/// A file of blocks that is open for reading.
struct PackSource {
    sys::InputFile file;
    /// Below the root, for the messages.
    OdString path;
};

/// Contents, and where they lie.
struct PackedContents {
    std::shared_ptr<const PackSource> source;
    DigestBytes digest = {};
    std::int64_t sizeBytes = 0;
    PackBlock block;
    std::uint32_t blockNumber = 0;
    /// Where they begin in the contents of the block.
    std::int64_t position = 0;

    /// Whether the block holds nothing else.
    bool isAlone() const { return sizeBytes == block.sizeBytes; }
};

/// What an entry and its block say together; nothing when they do not fit each other.
std::optional<PackedContents> placeOf(std::shared_ptr<const PackSource> source,
                                      const PackEntry& entry, const PackBlock& block);

/// "The version 1d4… in '.qrv/packs/….pack' is damaged: it ends too early"
ErrorMessage damagedContents(const PackedContents& contents, const OdString& cause);

}  // namespace qrv
