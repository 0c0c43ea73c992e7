#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/storage/BlockReader.h>
#include <engine/storage/CopyBuffer.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

/// A block that claims to be longer is not decoded as a whole for the sake of a part of it.
constexpr std::int64_t longestSharedBlock = std::int64_t{4} << 20;
/// So many are remembered.
constexpr std::size_t mostBlocks = 8;

/// The stored bytes of a block, or, of one that is kept as it is, of some contents in it.
class StoredBytes : public FramePieces {
public:
    StoredBytes(std::shared_ptr<const PackSource> source, std::int64_t offset, std::int64_t count)
        : source_(std::move(source)), offset_(offset), left_(count), buffer_(count) {}

    Expected<std::string_view> next() override {
        const auto count = std::min(static_cast<std::size_t>(left_), buffer_.size());
        const std::span<char> bytes = buffer_.span().first(count);
        const sys::Outcome<std::size_t> read = source_->file.readAt(offset_, bytes);
        if (!read)
            return systemFailure(tr(L"'%ls' cannot be read: %ls"), source_->path, read.error());
        offset_ += static_cast<std::int64_t>(*read);
        left_ -= static_cast<std::int64_t>(*read);
        return std::string_view(bytes.data(), *read);
    }
    bool goesOn() override { return left_ > 0; }

private:
    std::shared_ptr<const PackSource> source_;
    std::int64_t offset_;
    std::int64_t left_;
    CopyBuffer buffer_;
};

/// Contents that are kept as they are.
class RawReader : public VersionReader {
public:
    RawReader(std::unique_ptr<FramePieces> pieces, PackedContents contents,
              FrameReader::Check check)
        : pieces_(std::move(pieces)), contents_(std::move(contents)), left_(contents_.sizeBytes) {
        if (check == FrameReader::Check::digest)
            digest_.emplace();
    }

    Expected<std::size_t> read(std::span<char> buffer) override {
        std::size_t filled = 0;
        while (filled < buffer.size() && left_ > 0) {
            if (piece_.empty()) {
                const Expected<std::string_view> next = pieces_->next();
                if (!next)
                    return next.error();
                if (next->empty())
                    return damagedContents(contents_, tr(L"it ends too early"));
                piece_ = *next;
            }
            const std::size_t count = piece_.copy(buffer.data() + filled, buffer.size() - filled);
            piece_.remove_prefix(count);
            filled += count;
            left_ -= static_cast<std::int64_t>(count);
        }
        if (digest_)
            digest_->add(buffer.first(filled));
        if (left_ == 0 && digest_ && digest_->finish() != toDigits(contents_.digest))
            return damagedContents(contents_, tr(L"its contents are not those that were stored"));
        if (left_ == 0)
            digest_.reset();
        return filled;
    }
    std::int64_t sizeBytes() const override { return contents_.sizeBytes; }

private:
    std::unique_ptr<FramePieces> pieces_;
    PackedContents contents_;
    std::int64_t left_;
    std::string_view piece_;
    std::optional<Digest> digest_;
};

/// A part of a block that was decoded.
class PartOfBlock : public FramePieces {
public:
    PartOfBlock(std::shared_ptr<const Bytes> block, std::string_view part)
        : block_(std::move(block)), part_(part) {}

    Expected<std::string_view> next() override { return std::exchange(part_, {}); }
    bool goesOn() override { return false; }

private:
    std::shared_ptr<const Bytes> block_;
    std::string_view part_;
};

std::unique_ptr<FramePieces> storedBytesOf(const PackedContents& contents) {
    return std::make_unique<StoredBytes>(contents.source, contents.block.offset,
                                         contents.block.storedBytes);
}

std::unique_ptr<FrameReader> frameReader(const PackedContents& contents,
                                         std::shared_ptr<const Bytes> base,
                                         FrameReader::Check check) {
    return std::make_unique<FrameReader>(storedBytesOf(contents),
                                         FrameName{.digest = toDigits(contents.digest),
                                                   .sizeBytes = contents.block.sizeBytes,
                                                   .path = contents.source->path},
                                         std::move(base), check);
}

}  // namespace

Expected<std::shared_ptr<const Bytes>> BlockReader::sharedBlock(const PackedContents& contents) {
    const auto known =
        std::find_if(lastBlocks_.begin(), lastBlocks_.end(), [&](const SharedBlock& block) {
            return block.source == contents.source && block.offset == contents.block.offset;
        });
    if (known != lastBlocks_.end()) {
        std::rotate(lastBlocks_.begin(), known, known + 1);
        return lastBlocks_.front().contents;
    }
    if (contents.block.sizeBytes > longestSharedBlock)
        return damagedContents(contents, tr(L"its size is impossible"));
    Expected<Bytes> whole =
        readWhole(*frameReader(contents, nullptr, FrameReader::Check::sizeOnly));
    if (!whole)
        return std::move(whole).error();
    if (lastBlocks_.size() == mostBlocks)
        lastBlocks_.pop_back();
    lastBlocks_.insert(lastBlocks_.begin(),
                       {.source = contents.source,
                        .offset = contents.block.offset,
                        .contents = std::make_shared<const Bytes>(std::move(*whole))});
    return lastBlocks_.front().contents;
}

Expected<std::unique_ptr<VersionReader>> BlockReader::open(const PackedContents& contents,
                                                           std::shared_ptr<const Bytes> base,
                                                           FrameReader::Check check) {
    const PackBlock& block = contents.block;
    if (block.kind == BlockKind::raw)
        return std::unique_ptr<VersionReader>(std::make_unique<RawReader>(
            std::make_unique<StoredBytes>(contents.source, block.offset + contents.position,
                                          contents.sizeBytes),
            contents, check));
    if (block.sizeBytes / mostBytesOfOne > block.storedBytes)
        return damagedContents(contents, tr(L"its size is impossible"));
    if (contents.isAlone())
        return std::unique_ptr<VersionReader>(frameReader(contents, std::move(base), check));
    Expected<std::shared_ptr<const Bytes>> whole = sharedBlock(contents);
    if (!whole)
        return std::move(whole).error();
    const std::string_view part = (*whole)->view().substr(
        static_cast<std::size_t>(contents.position), static_cast<std::size_t>(contents.sizeBytes));
    return std::unique_ptr<VersionReader>(std::make_unique<RawReader>(
        std::make_unique<PartOfBlock>(std::move(*whole), part), contents, check));
}

}  // namespace qrv
