#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/storage/PackReader.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace qrv {

namespace {

/// So many bytes of a table are read at a time.
constexpr std::int64_t portionBytes = std::int64_t{256} << 10;

/// Calls `take` with each row of the table, whole or not.
template <class Take>
void eachRow(std::string_view rows, std::size_t rowBytes, Take take) {
    for (; rows.size() >= rowBytes; rows.remove_prefix(rowBytes))
        take(rows.substr(0, rowBytes));
}

}  // namespace

Expected<std::shared_ptr<const PackReader>> PackReader::open(sys::InputFile file, OdString path) {
    auto source =
        std::make_shared<PackSource>(PackSource{.file = std::move(file), .path = std::move(path)});
    const sys::Outcome<sys::FileStamp> stamp = source->file.stamp();
    if (!stamp)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), source->path, stamp.error());
    std::shared_ptr<PackReader> reader(new PackReader(std::move(source), PackTrailer()));
    // The trailer is there twice.
    constexpr std::int64_t both = 2 * std::int64_t{trailerBytes};
    if (stamp->sizeBytes < std::int64_t{packHeader.size()} + both)
        return reader->damaged(tr(L"it is too short"));
    const Expected<std::string> end = reader->bytesAt(stamp->sizeBytes - both, both);
    if (!end)
        return end.error();
    const std::string_view first = std::string_view(*end).substr(0, trailerBytes);
    const std::string_view second = std::string_view(*end).substr(trailerBytes);
    std::optional<PackTrailer> trailer = trailerOf(second);
    if (!trailer)
        trailer = trailerOf(first);
    if (!trailer && isNewerTrailer(first) && isNewerTrailer(second))
        return ErrorMessage{
            OdString::format(tr(L"'%ls' was written by a newer version of this program"),
                             printable(reader->source_->path))};
    if (!trailer || trailer->fileBytes() != stamp->sizeBytes)
        return reader->damaged(tr(L"its end is not that of a pack"));
    reader->trailer_ = *trailer;
    const Expected<std::string> header = reader->bytesAt(0, packHeader.size());
    if (!header)
        return header.error();
    reader->isArranged_ = *header == arrangedPackHeader;
    if (Expected<void> read = reader->readPages(); !read)
        return std::move(read).error();
    return std::shared_ptr<const PackReader>(std::move(reader));
}

PackReader::PackReader(std::shared_ptr<const PackSource> source, const PackTrailer& trailer)
    : source_(std::move(source)), trailer_(trailer) {
}

ErrorMessage PackReader::damaged(const OdString& cause) const {
    return {OdString::format(tr(L"'%ls' is damaged: %ls"), printable(source_->path), cause)};
}

// The caller knows that the file is long enough.
Expected<std::string> PackReader::bytesAt(std::int64_t offset, std::int64_t count) const {
    std::string bytes(static_cast<std::size_t>(count), '\0');
    const sys::Outcome<std::size_t> read = source_->file.readAt(offset, bytes);
    if (!read)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), source_->path, read.error());
    if (*read != bytes.size())
        return damaged(tr(L"it ends too early"));
    return bytes;
}

Expected<void> PackReader::readPages() {
    const Expected<std::string> rows =
        bytesAt(trailer_.pagesAt(), trailer_.pageCount() * std::int64_t{pageRowBytes});
    if (!rows)
        return rows.error();
    if (checksumOf(*rows) != trailer_.pageChecksum)
        return {};
    pages_.reserve(static_cast<std::size_t>(trailer_.pageCount()));
    eachRow(*rows, pageRowBytes, [this](std::string_view row) { pages_.push_back(pageOf(row)); });
    return {};
}

Expected<std::string> PackReader::rowsOfPage(std::int64_t page) const {
    const std::int64_t first = page * entriesOfPage;
    const std::int64_t count = std::min(entriesOfPage, trailer_.entryCount - first);
    return bytesAt(trailer_.entriesAt() + first * std::int64_t{entryRowBytes},
                   count * std::int64_t{entryRowBytes});
}

// A page with a damaged row is searched row by row, so that the others in it are found.
Expected<std::optional<PackEntry>> PackReader::entryInPage(std::int64_t page,
                                                           const DigestBytes& digest) const {
    const Expected<std::string> rows = rowsOfPage(page);
    if (!rows)
        return rows.error();
    const std::string_view wanted(reinterpret_cast<const char*>(digest.data()), digest.size());
    for (std::string_view left = *rows; !left.empty(); left.remove_prefix(entryRowBytes)) {
        if (left.starts_with(wanted))
            return std::optional(entryOf(left.substr(0, entryRowBytes)));
    }
    return std::optional<PackEntry>();
}

Expected<std::optional<PackEntry>> PackReader::entryWith(const DigestBytes& digest) const {
    std::int64_t page = 0;
    std::int64_t end = trailer_.pageCount();
    if (!pages_.empty()) {
        const std::uint64_t beginning = beginningOf(digest);
        const auto isBefore = [](const PackPage& each, std::uint64_t value) {
            return each.firstDigest < value;
        };
        const auto isBehind = [](std::uint64_t value, const PackPage& each) {
            return value < each.firstDigest;
        };
        // Digests with the same beginning can stand at the end of the page before.
        const auto first = std::lower_bound(pages_.begin(), pages_.end(), beginning, isBefore);
        page = std::max<std::int64_t>(first - pages_.begin() - 1, 0);
        end = std::upper_bound(first, pages_.end(), beginning, isBehind) - pages_.begin();
    }
    for (; page < end; ++page) {
        Expected<std::optional<PackEntry>> entry = entryInPage(page, digest);
        if (!entry || *entry)
            return entry;
    }
    return std::optional<PackEntry>();
}

Expected<std::optional<PackedContents>> PackReader::find(const DigestBytes& digest) const {
    const Expected<std::optional<PackEntry>> entry = entryWith(digest);
    if (!entry)
        return entry.error();
    if (!*entry)
        return std::optional<PackedContents>();
    const Expected<PackBlock> found = block((*entry)->block);
    if (!found)
        return found.error();
    std::optional<PackedContents> place = placeOf(source_, **entry, *found);
    if (!place)
        return damaged(tr(L"an entry of its tables is impossible"));
    return place;
}

Expected<PackBlock> PackReader::block(std::uint32_t number) const {
    if (number >= trailer_.blockCount)
        return damaged(tr(L"an entry of its tables is impossible"));
    const Expected<std::string> row =
        bytesAt(trailer_.blocksEnd + number * std::int64_t{blockRowBytes}, blockRowBytes);
    if (!row)
        return row.error();
    const std::optional<PackBlock> block = possibleBlock(*row);
    if (!block)
        return damaged(tr(L"an entry of its tables is impossible"));
    return *block;
}

std::optional<PackBlock> PackReader::possibleBlock(std::string_view row) const {
    std::optional<PackBlock> block = blockOf(row);
    if (block && (block->offset < std::int64_t{packHeader.size()} ||
                  block->storedBytes > trailer_.blocksEnd - block->offset))
        block.reset();
    return block;
}

Expected<std::vector<std::optional<PackBlock>>> PackReader::blocks() const {
    constexpr std::int64_t portion = portionBytes / std::int64_t{blockRowBytes};
    std::vector<std::optional<PackBlock>> all;
    all.reserve(static_cast<std::size_t>(trailer_.blockCount));
    for (std::int64_t first = 0; first < trailer_.blockCount; first += portion) {
        const std::int64_t count = std::min(portion, trailer_.blockCount - first);
        const Expected<std::string> rows =
            bytesAt(trailer_.blocksEnd + first * std::int64_t{blockRowBytes},
                    count * std::int64_t{blockRowBytes});
        if (!rows)
            return rows.error();
        eachRow(*rows, blockRowBytes,
                [&](std::string_view row) { all.push_back(possibleBlock(row)); });
    }
    return all;
}

Expected<PackEntry> PackReader::entry(std::uint32_t row) const {
    if (row >= trailer_.entryCount)
        return damaged(tr(L"an entry of its tables is impossible"));
    const Expected<std::string> bytes =
        bytesAt(trailer_.entriesAt() + row * std::int64_t{entryRowBytes}, entryRowBytes);
    if (!bytes)
        return bytes.error();
    return entryOf(*bytes);
}

Expected<std::vector<PackEntry>> PackReader::entries() const {
    std::vector<PackEntry> all;
    all.reserve(static_cast<std::size_t>(trailer_.entryCount));
    for (std::int64_t page = 0; page < trailer_.pageCount(); ++page) {
        const Expected<std::string> rows = rowsOfPage(page);
        if (!rows)
            return rows.error();
        eachRow(*rows, entryRowBytes,
                [&all](std::string_view row) { all.push_back(entryOf(row)); });
    }
    return all;
}

Expected<std::vector<PackSketch>> PackReader::sketches() const {
    const Expected<std::string> rows =
        bytesAt(trailer_.sketchesAt(), trailer_.sketchCount * std::int64_t{sketchRowBytes});
    if (!rows)
        return rows.error();
    std::vector<PackSketch> all;
    if (checksumOf(*rows) != trailer_.sketchChecksum)
        return all;
    all.reserve(static_cast<std::size_t>(trailer_.sketchCount));
    eachRow(*rows, sketchRowBytes,
            [&all](std::string_view row) { all.push_back(sketchRowOf(row)); });
    std::erase_if(all,
                  [this](const PackSketch& sketch) { return sketch.entry >= trailer_.entryCount; });
    return all;
}

Expected<void> PackReader::readStored(const PackBlock& block, std::int64_t position,
                                      std::span<char> bytes) const {
    if (position + std::ssize(bytes) > block.storedBytes)
        return damaged(tr(L"it ends too early"));
    const sys::Outcome<std::size_t> read = source_->file.readAt(block.offset + position, bytes);
    if (!read)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), source_->path, read.error());
    if (*read != bytes.size())
        return damaged(tr(L"it ends too early"));
    return {};
}

Expected<void> PackReader::checkPages(std::vector<OdString>& found) const {
    if (pages_.empty() && trailer_.pageCount() > 0)
        found.push_back(damaged(tr(L"the table of pages is not as it was written")).message);
    for (std::size_t page = 0; page < pages_.size(); ++page) {
        const Expected<std::string> rows = rowsOfPage(static_cast<std::int64_t>(page));
        if (!rows)
            return rows.error();
        if (checksumOf(*rows) != pages_[page].checksum)
            found.push_back(
                damaged(OdString::format(tr(L"page %i of the table of contents is not as it was "
                                            L"written"),
                                         static_cast<std::int64_t>(page)))
                    .message);
    }
    return {};
}

void PackReader::checkBlocks(std::span<const std::optional<PackBlock>> blocks,
                             std::vector<OdString>& found) const {
    for (std::size_t number = 0; number < blocks.size(); ++number) {
        if (!blocks[number])
            found.push_back(
                damaged(OdString::format(tr(L"block %i of the table of blocks is not as it was "
                                            L"written"),
                                         static_cast<std::int64_t>(number)))
                    .message);
    }
}

Expected<std::vector<OdString>> PackReader::damage() const {
    std::vector<OdString> found;
    const Expected<std::string> header = bytesAt(0, packHeader.size());
    if (!header)
        return header.error();
    if (*header != packHeader && *header != arrangedPackHeader)
        found.push_back(damaged(tr(L"its beginning is not that of a pack")).message);
    const std::int64_t both = 2 * std::int64_t{trailerBytes};
    const Expected<std::string> end = bytesAt(trailer_.fileBytes() - both, both);
    if (!end)
        return end.error();
    if (end->substr(0, trailerBytes) != end->substr(trailerBytes))
        found.push_back(damaged(tr(L"its end is not that of a pack")).message);
    if (Expected<void> checked = checkPages(found); !checked)
        return checked.error();
    const Expected<std::vector<std::optional<PackBlock>>> all = blocks();
    if (!all)
        return all.error();
    checkBlocks(*all, found);
    const Expected<std::string> sketches =
        bytesAt(trailer_.sketchesAt(), trailer_.sketchCount * std::int64_t{sketchRowBytes});
    if (!sketches)
        return sketches.error();
    if (checksumOf(*sketches) != trailer_.sketchChecksum)
        found.push_back(damaged(tr(L"the table of sketches is not as it was written")).message);
    return found;
}

}  // namespace qrv
