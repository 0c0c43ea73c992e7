#pragma once

#include <engine/base/DigestBytes.h>
#include <engine/storage/PackRows.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

namespace qrv {

/// The tables of a pack that is being written: what is in it so far, found by digest.
class PackTables {
public:
    /// The number of a new block, about which `setBlock` says the rest later.
    std::uint32_t addBlock();
    void setBlock(std::uint32_t number, const PackBlock& block) { blocks_[number] = block; }
    /// The digest must not be there yet.
    void addEntry(const PackEntry& entry, const std::optional<Sketch>& sketch);

    /// Null when there is none.
    const PackEntry* find(const DigestBytes& digest) const;
    const std::vector<PackBlock>& blocks() const { return blocks_; }
    const std::vector<PackEntry>& entries() const { return entries_; }

    using Write = std::function<std::error_code(std::string_view bytes)>;
    /// Hands the tables and the trailer to `write`, piece by piece, for a file whose blocks end at
    /// `blocksEnd`. Gives the trailer in `trailer`. Fails as `write` does.
    std::error_code write(std::int64_t blocksEnd, const Write& write, PackTrailer& trailer) const;

private:
    std::size_t slotOf(const DigestBytes& digest) const;
    void grow();
    std::vector<std::uint32_t> inOrder() const;

    struct SketchOf {
        std::uint32_t entry = 0;
        Sketch sketch = {};
    };

    std::vector<PackBlock> blocks_;
    std::vector<PackEntry> entries_;
    std::vector<SketchOf> sketches_;
    // Where in `entries_` a digest stands, plus one; 0 is free. An open hash table, which takes a
    // tenth of what a map would: a commit can have a million of them.
    std::vector<std::uint32_t> slots_;
};

}  // namespace qrv
