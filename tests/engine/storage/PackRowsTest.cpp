#include <engine/storage/PackRows.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using qrv::BlockKind;
using qrv::PackBlock;
using qrv::PackEntry;
using qrv::PackPage;
using qrv::PackSketch;
using qrv::PackTrailer;

qrv::DigestBytes digest(unsigned char first) {
    qrv::DigestBytes bytes = {};
    bytes.fill(7);
    bytes[0] = first;
    return bytes;
}

template <class Row>
std::string bytesOf(const Row& row) {
    std::string bytes;
    append(bytes, row);
    return bytes;
}

const PackBlock difference = {.offset = 0x123456789A,
                              .storedBytes = 3,
                              .sizeBytes = 4,
                              .kind = BlockKind::difference,
                              .depth = 16,
                              .roundStart = 2,
                              .base = digest(9)};
const PackTrailer trailer = {.blocksEnd = 100,
                             .blockCount = 2,
                             .entryCount = 94,
                             .sketchCount = 1,
                             .sketchChecksum = 5,
                             .pageChecksum = 6};

TEST(PackRows, AreReadAsTheyWereWritten) {
    EXPECT_EQ(qrv::blockOf(bytesOf(difference)), difference);
    const PackBlock raw = {.offset = 16, .storedBytes = 5, .sizeBytes = 5};
    EXPECT_EQ(qrv::blockOf(bytesOf(raw)), raw);
    const PackEntry entry = {.digest = digest(1), .block = 2, .position = 3, .sizeBytes = ~0U};
    EXPECT_EQ(qrv::entryOf(bytesOf(entry)), entry);
    const PackSketch sketch = {.entry = 8, .sketch = {.features = {1, 0xFFFF, 3}}};
    EXPECT_EQ(qrv::sketchRowOf(bytesOf(sketch)), sketch);
    const PackPage page = {.firstDigest = 1ULL << 63U, .checksum = 4};
    EXPECT_EQ(qrv::pageOf(bytesOf(page)), page);
    EXPECT_EQ(qrv::trailerOf(bytesOf(trailer)), trailer);
}

TEST(PackRows, HaveTheirLengths) {
    EXPECT_EQ(bytesOf(difference).size(), qrv::blockRowBytes);
    EXPECT_EQ(bytesOf(PackEntry()).size(), qrv::entryRowBytes);
    EXPECT_EQ(bytesOf(PackSketch()).size(), qrv::sketchRowBytes);
    EXPECT_EQ(bytesOf(PackPage()).size(), qrv::pageRowBytes);
    EXPECT_EQ(bytesOf(trailer).size(), qrv::trailerBytes);
}

TEST(PackRows, ATrailerSaysWhereTheTablesLie) {
    EXPECT_EQ(trailer.entriesAt(), 100 + 2 * 64);
    EXPECT_EQ(trailer.sketchesAt(), trailer.entriesAt() + 94 * 44);
    EXPECT_EQ(trailer.pageCount(), 2);
    EXPECT_EQ(trailer.pagesAt(), trailer.sketchesAt() + 28);
    EXPECT_EQ(trailer.fileBytes(), trailer.pagesAt() + 2 * 16 + 2 * 72);
}

TEST(PackRows, ABlockThatCannotBeIsNone) {
    const auto changed = [](auto change) {
        PackBlock block = difference;
        change(block);
        return qrv::blockOf(bytesOf(block));
    };
    EXPECT_TRUE(changed([](PackBlock&) {}));
    EXPECT_FALSE(changed([](PackBlock& block) { block.offset = -1; }));
    EXPECT_FALSE(changed([](PackBlock& block) { block.storedBytes = std::int64_t{1} << 51; }));
    EXPECT_FALSE(changed([](PackBlock& block) { block.sizeBytes = -5; }));
    EXPECT_FALSE(changed([](PackBlock& block) { block.kind = static_cast<BlockKind>(4); }));
    EXPECT_FALSE(changed([](PackBlock& block) { block.kind = BlockKind::frame; }));
    EXPECT_FALSE(changed([](PackBlock& block) { block.depth = 17; }));
    EXPECT_FALSE(changed([](PackBlock& block) { block.depth = 1; }));
    EXPECT_FALSE(changed([](PackBlock& block) { block.roundStart = 0; }));
    EXPECT_FALSE(changed([](PackBlock& block) { block.roundStart = 17; }));
    EXPECT_FALSE(changed([](PackBlock& block) { block.base = {}; }));
    const PackBlock shorter = {.offset = 16, .storedBytes = 4, .sizeBytes = 5};
    EXPECT_FALSE(qrv::blockOf(bytesOf(shorter)));
}

TEST(PackRows, ATrailerThatCannotBeIsNone) {
    const auto changed = [](auto change) {
        PackTrailer other = trailer;
        change(other);
        return qrv::trailerOf(bytesOf(other));
    };
    EXPECT_TRUE(changed([](PackTrailer&) {}));
    EXPECT_FALSE(changed([](PackTrailer& each) { each.blocksEnd = 15; }));
    EXPECT_FALSE(changed([](PackTrailer& each) { each.blocksEnd = -1; }));
    EXPECT_FALSE(changed([](PackTrailer& each) { each.blockCount = (1 << 22) + 1; }));
    EXPECT_FALSE(changed([](PackTrailer& each) { each.entryCount = (1 << 22) + 1; }));
    EXPECT_FALSE(changed([](PackTrailer& each) { each.sketchCount = 95; }));
}

TEST(PackRows, AnyOtherByteIsSeen) {
    const std::string block = bytesOf(difference);
    const std::string end = bytesOf(trailer);
    for (std::size_t at = 0; at < block.size(); ++at) {
        std::string damaged = block;
        damaged[at] = static_cast<char>(damaged[at] ^ 1);
        EXPECT_FALSE(qrv::blockOf(damaged)) << at;
    }
    for (std::size_t at = 0; at < end.size(); ++at) {
        std::string damaged = end;
        damaged[at] = static_cast<char>(damaged[at] ^ 1);
        EXPECT_FALSE(qrv::trailerOf(damaged)) << at;
    }
}

TEST(PackRows, ANewerTrailerIsToldFromADamagedOne) {
    std::string newer = bytesOf(trailer);
    newer[8] = 2;
    EXPECT_TRUE(qrv::isNewerTrailer(newer));
    EXPECT_FALSE(qrv::isNewerTrailer(bytesOf(trailer)));
    EXPECT_FALSE(qrv::isNewerTrailer(std::string(qrv::trailerBytes, '\x7F')));
}

TEST(PackRows, APackIsNamedBySixteenDigits) {
    EXPECT_TRUE(qrv::isPackName(qrv::packNameOf(trailer)));
    EXPECT_TRUE(qrv::isPackName("0123456789abcdef"));
    for (const char* const name : {"", "0123456789abcde", "0123456789abcdef0", "0123456789abcdeF",
                                   "0123456789abcdeg", "../3456789abcdef"})
        EXPECT_FALSE(qrv::isPackName(name)) << name;
}

}  // namespace
