#include <engine/base/Digest.h>
#include <engine/base/Hex.h>
#include <engine/storage/PackRows.h>

#include <algorithm>
#include <array>
#include <span>

namespace qrv {

namespace {

constexpr std::string_view trailerBegin = "qrv pack";
constexpr std::uint64_t layoutVersion = 1;
// So that no sum of them leaves the range of the numbers.
constexpr std::uint64_t mostRows = std::uint64_t{mostEntriesOfPack};
constexpr std::uint64_t longestFile = std::uint64_t{1} << 50U;
constexpr std::size_t checksumBytes = 8;
constexpr std::size_t rowChecksumBytes = 4;

template <class Number>
void appendNumber(std::string& bytes, Number number) {
    const auto value = static_cast<std::uint64_t>(number);
    for (unsigned shift = 0; shift < sizeof(Number) * 8; shift += 8)
        bytes += static_cast<char>(value >> shift & 0xFFU);
}

void appendDigest(std::string& bytes, const DigestBytes& digest) {
    bytes.append(reinterpret_cast<const char*>(digest.data()), digest.size());
}

/// Takes a row apart from its beginning to its end.
class RowBytes {
public:
    explicit RowBytes(std::string_view bytes) : bytes_(bytes) {}

    std::uint64_t number(std::size_t count) {
        std::uint64_t value = 0;
        for (std::size_t i = count; i > 0; --i)
            value = value << 8U | static_cast<unsigned char>(bytes_[i - 1]);
        bytes_.remove_prefix(count);
        return value;
    }
    std::uint32_t shortNumber() { return static_cast<std::uint32_t>(number(4)); }
    std::uint8_t byte() { return static_cast<std::uint8_t>(number(1)); }
    DigestBytes digest() {
        DigestBytes digest = {};
        std::copy_n(bytes_.begin(), digest.size(), digest.begin());
        bytes_.remove_prefix(digest.size());
        return digest;
    }

private:
    std::string_view bytes_;
};

std::uint32_t rowChecksum(std::string_view bytes) {
    return static_cast<std::uint32_t>(checksumOf(bytes));
}

bool isPossible(const PackBlock& block) {
    const bool isDifference = block.kind == BlockKind::difference;
    const bool hasKind = isDifference || block.kind == BlockKind::frame ||
                         (block.kind == BlockKind::raw && block.storedBytes == block.sizeBytes);
    const bool hasDepth =
        isDifference ? block.depth > 1 && block.depth <= longestChain : block.depth == 1;
    const bool hasBase =
        std::any_of(block.base.begin(), block.base.end(), [](auto byte) { return byte != 0; });
    return hasKind && hasDepth && block.roundStart >= 1 && block.roundStart <= block.depth &&
           isDifference == hasBase;
}

}  // namespace

std::int64_t PackTrailer::pageCount() const {
    return (entryCount + entriesOfPage - 1) / entriesOfPage;
}

std::int64_t PackTrailer::entriesAt() const {
    return blocksEnd + blockCount * std::int64_t{blockRowBytes};
}

std::int64_t PackTrailer::sketchesAt() const {
    return entriesAt() + entryCount * std::int64_t{entryRowBytes};
}

std::int64_t PackTrailer::pagesAt() const {
    return sketchesAt() + sketchCount * std::int64_t{sketchRowBytes};
}

std::int64_t PackTrailer::fileBytes() const {
    return pagesAt() + pageCount() * std::int64_t{pageRowBytes} + 2 * std::int64_t{trailerBytes};
}

std::uint64_t checksumOf(std::string_view bytes) {
    const std::string digest = fromHex(Digest::of(bytes));
    return RowBytes(digest).number(checksumBytes);
}

std::uint64_t beginningOf(const DigestBytes& digest) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i)
        value = value << 8U | digest[i];
    return value;
}

void append(std::string& bytes, const PackBlock& row) {
    std::string written;
    written.reserve(blockRowBytes);
    appendNumber(written, row.offset);
    appendNumber(written, row.storedBytes);
    appendNumber(written, row.sizeBytes);
    appendNumber(written, static_cast<std::uint8_t>(row.kind));
    appendNumber(written, row.depth);
    appendNumber(written, row.roundStart);
    appendNumber(written, std::uint8_t{0});
    appendDigest(written, row.base);
    appendNumber(written, rowChecksum(written));
    bytes += written;
}

void append(std::string& bytes, const PackEntry& row) {
    appendDigest(bytes, row.digest);
    appendNumber(bytes, row.block);
    appendNumber(bytes, row.position);
    appendNumber(bytes, row.sizeBytes);
}

void append(std::string& bytes, const PackSketch& row) {
    appendNumber(bytes, row.entry);
    const std::array<char, Sketch::byteCount> sketch = bytesOf(row.sketch);
    bytes.append(sketch.data(), sketch.size());
}

void append(std::string& bytes, const PackPage& row) {
    appendNumber(bytes, row.firstDigest);
    appendNumber(bytes, row.checksum);
}

void append(std::string& bytes, const PackTrailer& trailer) {
    std::string written(trailerBegin);
    appendNumber(written, layoutVersion);
    appendNumber(written, trailer.blocksEnd);
    appendNumber(written, trailer.blockCount);
    appendNumber(written, trailer.entryCount);
    appendNumber(written, trailer.sketchCount);
    appendNumber(written, trailer.sketchChecksum);
    appendNumber(written, trailer.pageChecksum);
    appendNumber(written, checksumOf(written));
    bytes += written;
}

std::optional<PackBlock> blockOf(std::string_view row) {
    RowBytes bytes(row);
    PackBlock block;
    const std::uint64_t offset = bytes.number(8);
    const std::uint64_t stored = bytes.number(8);
    const std::uint64_t size = bytes.number(8);
    block.kind = static_cast<BlockKind>(bytes.byte());
    block.depth = bytes.byte();
    block.roundStart = bytes.byte();
    const bool isReserved = bytes.byte() != 0;
    block.base = bytes.digest();
    if (bytes.shortNumber() != rowChecksum(row.substr(0, blockRowBytes - rowChecksumBytes)) ||
        offset > longestFile || stored > longestFile || size > longestFile || isReserved)
        return std::nullopt;
    block.offset = static_cast<std::int64_t>(offset);
    block.storedBytes = static_cast<std::int64_t>(stored);
    block.sizeBytes = static_cast<std::int64_t>(size);
    return isPossible(block) ? std::optional(block) : std::nullopt;
}

PackEntry entryOf(std::string_view row) {
    RowBytes bytes(row);
    PackEntry entry;
    entry.digest = bytes.digest();
    entry.block = bytes.shortNumber();
    entry.position = bytes.shortNumber();
    entry.sizeBytes = bytes.shortNumber();
    return entry;
}

PackSketch sketchRowOf(std::string_view row) {
    const std::string_view sketch = row.substr(sketchRowBytes - Sketch::byteCount);
    return {.entry = RowBytes(row).shortNumber(),
            .sketch = sketchOf(std::span<const char, Sketch::byteCount>(sketch))};
}

PackPage pageOf(std::string_view row) {
    RowBytes bytes(row);
    PackPage page;
    page.firstDigest = bytes.number(8);
    page.checksum = bytes.number(8);
    return page;
}

std::optional<PackTrailer> trailerOf(std::string_view bytes) {
    if (!bytes.starts_with(trailerBegin))
        return std::nullopt;
    RowBytes rest(bytes.substr(trailerBegin.size()));
    if (rest.number(8) != layoutVersion)
        return std::nullopt;
    const std::uint64_t blocksEnd = rest.number(8);
    const std::uint64_t blockCount = rest.number(8);
    const std::uint64_t entryCount = rest.number(8);
    const std::uint64_t sketchCount = rest.number(8);
    PackTrailer trailer = {.blocksEnd = static_cast<std::int64_t>(blocksEnd),
                           .blockCount = static_cast<std::int64_t>(blockCount),
                           .entryCount = static_cast<std::int64_t>(entryCount),
                           .sketchCount = static_cast<std::int64_t>(sketchCount)};
    trailer.sketchChecksum = rest.number(8);
    trailer.pageChecksum = rest.number(8);
    const bool isPossible = blocksEnd >= packHeader.size() && blocksEnd <= longestFile &&
                            blockCount <= mostRows && entryCount <= mostRows &&
                            sketchCount <= entryCount;
    if (!isPossible || rest.number(8) != checksumOf(bytes.substr(0, trailerBytes - checksumBytes)))
        return std::nullopt;
    return trailer;
}

bool isNewerTrailer(std::string_view bytes) {
    return bytes.starts_with(trailerBegin) &&
           RowBytes(bytes.substr(trailerBegin.size())).number(8) > layoutVersion;
}

std::string packNameOf(const PackTrailer& trailer) {
    std::string bytes;
    append(bytes, trailer);
    return toHex(std::string_view(bytes).substr(trailerBytes - checksumBytes));
}

bool isPackName(std::string_view name) {
    return name.size() == 2 * checksumBytes && !fromHex(name).empty();
}

}  // namespace qrv
