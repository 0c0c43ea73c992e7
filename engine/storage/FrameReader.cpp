#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/database/Database.h>
#include <engine/storage/FrameReader.h>

#include <algorithm>
#include <array>
#include <utility>

namespace qrv {

FrameReader::FrameReader(std::unique_ptr<FramePieces> pieces, FrameName name,
                         std::shared_ptr<const Bytes> base, Check check)
    : pieces_(std::move(pieces)),
      name_(std::move(name)),
      base_(std::move(base)),
      decoder_(name_.sizeBytes, base_ ? base_->span() : std::span<const char>()) {
    if (check == Check::digest)
        digest_.emplace();
}

Expected<std::size_t> FrameReader::read(std::span<char> buffer) try {
    std::size_t filled = 0;
    while (filled < buffer.size() && written_ < name_.sizeBytes) {
        Expected<std::size_t> count = decode(buffer.subspan(filled));
        if (!count)
            return count;
        filled += *count;
    }
    if (written_ < name_.sizeBytes)
        return filled;
    if (Expected<void> end = checkEnd(); !end)
        return std::move(end).error();
    return filled;
} catch (const DatabaseError& error) {
    return ErrorMessage{error.description()};
}

// Gives how many bytes one step of the decoder wrote, possibly none.
Expected<std::size_t> FrameReader::decode(std::span<char> buffer) {
    if (piece_.empty() && !isEnd_) {
        if (Expected<void> next = nextPiece(); !next)
            return std::move(next).error();
    }
    if (isEnd_ || piece_.empty())
        return damaged(tr(L"it ends too early"));
    const auto missing = static_cast<std::size_t>(name_.sizeBytes - written_);
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

Expected<void> FrameReader::nextPiece() {
    const Expected<std::string_view> piece = pieces_->next();
    if (!piece)
        return piece.error();
    piece_ = *piece;
    return {};
}

// When all contents are written, the end of the frame must follow, and nothing behind it.
Expected<void> FrameReader::checkEnd() {
    if (isChecked_)
        return {};
    while (!isEnd_) {
        if (Expected<std::size_t> none = decode({}); !none)
            return std::move(none).error();
    }
    if (!piece_.empty() || pieces_->goesOn())
        return damaged(tr(L"it goes on behind its end"));
    if (digest_ && digest_->finish() != name_.digest)
        return damaged(tr(L"its contents are not those that were stored"));
    isChecked_ = true;
    return {};
}

ErrorMessage FrameReader::damaged(const OdString& cause) const {
    return {OdString::format(tr(L"The version %ls in '%ls' is damaged: %ls"),
                             OdString::fromNarrow(name_.digest), printable(name_.path), cause)};
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
