#pragma once

#include <engine/base/DigestBytes.h>
#include <engine/storage/Sketch.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace qrv {

// The rows of a pack's tables as they lie in the file, and nothing about where they come from.
// docs/formats/pack.md shows them. All numbers begin with their lowest byte.

/// How the contents of a block are kept.
enum class BlockKind : std::uint8_t {
    raw = 1,         ///< as they are
    frame = 2,       ///< a frame that stands alone
    difference = 3,  ///< a frame that was made against other contents
};

/// A row of the table of blocks.
struct PackBlock {
    std::int64_t offset = 0;
    std::int64_t storedBytes = 0;
    /// Of the contents, one behind the other.
    std::int64_t sizeBytes = 0;
    BlockKind kind = BlockKind::raw;
    /// How many blocks it takes to read this one, itself included.
    std::uint8_t depth = 1;
    /// The depth at which this block's part of the chain began; see `Packs::baseAfter`.
    std::uint8_t roundStart = 1;
    /// The digest of the contents that a difference was made against; zero for other kinds.
    DigestBytes base = {};

    friend bool operator==(const PackBlock&, const PackBlock&) = default;
};

/// A row of the table of contents, which is ordered by digest.
struct PackEntry {
    DigestBytes digest = {};
    std::uint32_t block = 0;
    /// Where the contents begin in those of the block.
    std::uint32_t position = 0;
    std::uint32_t sizeBytes = 0;

    friend bool operator==(const PackEntry&, const PackEntry&) = default;
};

/// A row of the table of sketches.
struct PackSketch {
    /// Which row of the table of contents.
    std::uint32_t entry = 0;
    Sketch sketch = {};

    friend bool operator==(const PackSketch&, const PackSketch&) = default;
};

/// A row of the table of pages: rows of the table of contents that are read and checked together.
struct PackPage {
    /// The first bytes of the page's first digest, as a number that is ordered like them.
    std::uint64_t firstDigest = 0;
    std::uint64_t checksum = 0;

    friend bool operator==(const PackPage&, const PackPage&) = default;
};

/// The last bytes of a pack, which say where everything else lies.
struct PackTrailer {
    std::int64_t blocksEnd = 0;
    std::int64_t blockCount = 0;
    std::int64_t entryCount = 0;
    std::int64_t sketchCount = 0;
    std::uint64_t sketchChecksum = 0;
    std::uint64_t pageChecksum = 0;

    std::int64_t pageCount() const;
    std::int64_t entriesAt() const;
    std::int64_t sketchesAt() const;
    std::int64_t pagesAt() const;
    /// Of the whole file.
    std::int64_t fileBytes() const;

    friend bool operator==(const PackTrailer&, const PackTrailer&) = default;
};

inline constexpr std::string_view packHeader{"qrv pack 1\n\0\0\0\0\0", 16};
/// Of a pack whose contents were put in order and compressed with more effort.
inline constexpr std::string_view arrangedPackHeader{"qrv pack 1\n\1\0\0\0\0", 16};
inline constexpr std::size_t blockRowBytes = 64;
inline constexpr std::size_t entryRowBytes = 44;
inline constexpr std::size_t sketchRowBytes = 28;
inline constexpr std::size_t pageRowBytes = 16;
inline constexpr std::size_t trailerBytes = 72;
/// How many entries a page has; the last one has fewer.
inline constexpr std::int64_t entriesOfPage = 93;
/// How many entries a pack has at most, so that a list of them fits into memory.
inline constexpr std::int64_t mostEntriesOfPack = std::int64_t{1} << 22;
/// How many blocks it takes at most to read contents.
inline constexpr std::uint8_t longestChain = 16;
/// Contents that it takes more blocks to read have no sketch: what is similar is to have room for
/// its own versions behind it.
inline constexpr std::uint8_t deepestSketched = 8;

/// The first eight bytes of the SHA-256 digest.
std::uint64_t checksumOf(std::string_view bytes);
/// `PackPage::firstDigest` of a page that begins with this digest.
std::uint64_t beginningOf(const DigestBytes& digest);

void append(std::string& bytes, const PackBlock& row);
void append(std::string& bytes, const PackEntry& row);
void append(std::string& bytes, const PackSketch& row);
void append(std::string& bytes, const PackPage& row);
void append(std::string& bytes, const PackTrailer& trailer);

// Each takes exactly the bytes of one row.

/// Nothing when its checksum is wrong or when it holds what cannot be.
std::optional<PackBlock> blockOf(std::string_view row);
PackEntry entryOf(std::string_view row);
PackSketch sketchRowOf(std::string_view row);
PackPage pageOf(std::string_view row);
/// Nothing when its checksum is wrong or the numbers do not fit each other.
std::optional<PackTrailer> trailerOf(std::string_view bytes);
/// Whether the bytes, which are no trailer of ours, are one of a newer layout.
bool isNewerTrailer(std::string_view bytes);
/// The name of a pack: 16 hexadecimal digits that follow from what its trailer says.
std::string packNameOf(const PackTrailer& trailer);
/// Whether a pack can have the name.
bool isPackName(std::string_view name);

}  // namespace qrv
