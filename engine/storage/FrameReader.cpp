#include <engine/base/Translation.h>
#include <engine/storage/FrameReader.h>

#include <algorithm>
#include <array>
#include <utility>

namespace qrv {

Expected<std::unique_ptr<FrameReader>> FrameReader::open(std::shared_ptr<Database> database,
                                                         Frame frame,
                                                         std::shared_ptr<const Bytes> base,
                                                         Check check) {
    std::unique_ptr<FrameReader> reader(
        new FrameReader(std::move(database), std::move(frame), std::move(base), check));
    if (Expected<void> extent = reader->checkExtent(); !extent)
        return std::move(extent).error();
    return reader;
}

FrameReader::FrameReader(std::shared_ptr<Database> database, Frame frame,
                         std::shared_ptr<const Bytes> base, Check check)
    : database_(std::move(database)),
      frame_(std::move(frame)),
      base_(std::move(base)),
      decoder_(frame_.sizeBytes, base_ ? base_->span() : std::span<const char>()),
      pieces_(database_->prepare(
          "SELECT position, bytes FROM pieces WHERE frame = ? ORDER BY position")) {
    pieces_.bind(frame_.number);
    if (check == Check::digest)
        digest_.emplace();
}

Expected<void> FrameReader::checkExtent() {
    Statement extent = database_->prepare(
        "SELECT coalesce(sum(length(bytes)), 0), coalesce(max(length(bytes)), 0)"
        " FROM pieces WHERE frame = ?");
    extent.bind(frame_.number);
    extent.step();
    const std::int64_t storedBytes = extent.integer(0);
    const std::int64_t longestPiece = extent.integer(1);
    if (storedBytes == 0)
        return damaged(tr(L"its contents are missing"));
    if (longestPiece > pieceBytes || frame_.sizeBytes / mostBytesOfOne > storedBytes)
        return damaged(tr(L"its size is impossible"));
    return {};
}

Expected<std::size_t> FrameReader::read(std::span<char> buffer) try {
    std::size_t filled = 0;
    while (filled < buffer.size() && written_ < frame_.sizeBytes) {
        Expected<std::size_t> count = decode(buffer.subspan(filled));
        if (!count)
            return count;
        filled += *count;
    }
    if (written_ < frame_.sizeBytes)
        return filled;
    if (Expected<void> end = checkEnd(); !end)
        return std::move(end).error();
    return filled;
} catch (const DatabaseError& error) {
    return ErrorMessage{error.description()};
}

// Gives how many bytes one step of the decoder wrote, possibly none.
Expected<std::size_t> FrameReader::decode(std::span<char> buffer) {
    if (isEnd_ || (piece_.empty() && !nextPiece()))
        return damaged(tr(L"it ends too early"));
    const auto missing = static_cast<std::size_t>(frame_.sizeBytes - written_);
    const std::span<char> room = buffer.first(std::min(buffer.size(), missing));
    Expected<FrameDecoder::Step> step = decoder_.step(piece_, room);
    if (!step)
        return damaged(step.error().message);
    piece_.remove_prefix(step->read);
    isEnd_ = step->isEnd;
    written_ += static_cast<std::int64_t>(step->written);
    if (digest_)
        digest_->add(room.first(step->written));
    return step->written;
}

bool FrameReader::nextPiece() {
    if (!pieces_.step() || pieces_.integer(0) != piecesRead_)
        return false;
    ++piecesRead_;
    piece_ = pieces_.bytes(1);
    return !piece_.empty();
}

// When all contents are written, the end of the frame must follow, and nothing behind it.
Expected<void> FrameReader::checkEnd() {
    if (isChecked_)
        return {};
    while (!isEnd_) {
        if (Expected<std::size_t> none = decode({}); !none)
            return std::move(none).error();
    }
    // The step behind the last piece also lets go of the lock on the file.
    if (!piece_.empty() || pieces_.step())
        return damaged(tr(L"it goes on behind its end"));
    if (digest_ && digest_->finish() != frame_.digest)
        return damaged(tr(L"its contents are not those that were stored"));
    isChecked_ = true;
    return {};
}

ErrorMessage FrameReader::damaged(const OdString& cause) const {
    return damagedFrame(*database_, frame_, cause);
}

Expected<Bytes> readWhole(VersionReader& contents) {
    Expected<Bytes> bytes = Bytes::ofSize(contents.sizeBytes());
    if (!bytes)
        return bytes;
    const Expected<std::size_t> count = contents.read(bytes->span());
    if (!count)
        return count.error();
    // Only a reader that has nothing more to give has looked at its digest.
    std::array<char, 1> more{};
    const Expected<std::size_t> surplus = contents.read(more);
    if (!surplus)
        return surplus.error();
    if (*count != bytes->span().size() || *surplus != 0)
        return ErrorMessage{tr(L"The contents are not as long as they should be")};
    return bytes;
}

}  // namespace qrv
