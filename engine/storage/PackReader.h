#pragma once

#include <common/base/Expected.h>
#include <engine/base/DigestBytes.h>
#include <engine/storage/PackRows.h>
#include <engine/storage/PackSource.h>
#include <sys/InputFile.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qrv {

/// The tables of one pack. Nothing in the file is believed: what is damaged costs what stands
/// there, and memory is taken only for what the file is long enough for.
///
/// A failure says that the file cannot be read or is damaged, and names it.
class PackReader {
public:
    /// `path` is for the messages. Fails for a file that is no pack, or not all of one.
    static Expected<std::shared_ptr<const PackReader>> open(sys::InputFile file, OdString path);

    const PackTrailer& trailer() const { return trailer_; }
    /// Whether the pack was made of others, with its contents in order (see PackWriter).
    bool isArranged() const { return isArranged_; }
    const std::shared_ptr<const PackSource>& source() const { return source_; }

    /// Where the contents of that digest lie; nothing when they are not here. Reads at most a page
    /// and a row, but for a damaged place in the tables, where it reads on.
    Expected<std::optional<PackedContents>> find(const DigestBytes& digest) const;
    /// The row of a block. Fails when it is damaged.
    Expected<PackBlock> block(std::uint32_t number) const;
    /// A row of the table of contents, counted from 0.
    Expected<PackEntry> entry(std::uint32_t row) const;
    /// All rows of the table of contents, in the order of the digests, as they stand there.
    Expected<std::vector<PackEntry>> entries() const;
    /// All rows of the table of blocks; nothing for one that is damaged.
    Expected<std::vector<std::optional<PackBlock>>> blocks() const;
    /// All sketches; none when their table is damaged.
    Expected<std::vector<PackSketch>> sketches() const;
    /// The bytes of a block from `position` on, as they lie in the file. Fails when there are
    /// fewer.
    Expected<void> readStored(const PackBlock& block, std::int64_t position,
                              std::span<char> bytes) const;
    /// What is wrong with the header, the tables and the places that they name, without a look at
    /// any contents: a sentence each.
    Expected<std::vector<OdString>> damage() const;

private:
    using Entries = std::vector<PackEntry>;

    PackReader(std::shared_ptr<const PackSource> source, const PackTrailer& trailer);

    Expected<void> readPages();
    Expected<std::string> bytesAt(std::int64_t offset, std::int64_t count) const;
    Expected<std::optional<PackEntry>> entryWith(const DigestBytes& digest) const;
    Expected<std::optional<PackEntry>> entryInPage(std::int64_t page,
                                                   const DigestBytes& digest) const;
    Expected<std::string> rowsOfPage(std::int64_t page) const;
    Expected<void> checkPages(std::vector<OdString>& found) const;
    std::optional<PackBlock> possibleBlock(std::string_view row) const;
    void checkBlocks(std::span<const std::optional<PackBlock>> blocks,
                     std::vector<OdString>& found) const;
    ErrorMessage damaged(const OdString& cause) const;

    std::shared_ptr<const PackSource> source_;
    PackTrailer trailer_;
    bool isArranged_ = false;
    // Empty when their table is damaged: then every page is read.
    std::vector<PackPage> pages_;
};

}  // namespace qrv
