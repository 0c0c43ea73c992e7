#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/storage/PackWriter.h>
#include <engine/storage/ReadToEnd.h>
#include <engine/storage/StorageMessages.h>
#include <engine/storage/Zstd.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace qrv {

namespace {

// Nobody needs to write to a pack again.
constexpr std::uint32_t packPermissions = 0444;
constexpr std::chrono::hours leftoverAge{24};
// So many bytes go into the file in one call.
constexpr std::size_t bufferBytes = 256UL << 10;
// A difference has a row of its own in the table of blocks, so that of less it saves nothing.
constexpr std::size_t shortestWithBase = 1024;
// Takes some half a second.
constexpr std::int64_t thoroughlyAnyway = std::int64_t{16} << 20;

ErrorMessage cause(std::error_code error) {
    return {causeOf(error)};
}

ErrorMessage folderFailure(std::error_code error) {
    return cannotWrite(OdString(layout::packsFolder), causeOf(error));
}

}  // namespace

PackWriter::PackWriter(sys::Folder root, Effort effort) : root_(std::move(root)), effort_(effort) {
}

Effort PackWriter::effortFor(std::int64_t sizeBytes) {
    if (thoroughBytes_ + sizeBytes > thoroughlyAnyway)
        return effort_;
    thoroughBytes_ += sizeBytes;
    return Effort::thorough;
}

bool PackWriter::isFull() const {
    return offset_ >= fullPackBytes || std::ssize(tables_.entries()) >= mostEntriesOfPack;
}

std::error_code PackWriter::begin() {
    if (file_)
        return {};
    const sys::Outcome<sys::FileStatus> status = root_.status(layout::packsFolder);
    isFolderNew_ = !status && sys::meansAbsent(status.error());
    sys::Outcome<sys::NewFile> file = root_.newFile(layout::packPath("new"), packPermissions);
    if (!file)
        return file.error();
    file_.emplace(std::move(*file));
    root_.removeLeftovers(layout::packsFolder, leftoverAge);
    return write(effort_ == Effort::thorough ? arrangedPackHeader : packHeader);
}

std::error_code PackWriter::write(std::span<const char> bytes) {
    offset_ += std::ssize(bytes);
    buffer_.append(bytes.data(), bytes.size());
    return buffer_.size() < bufferBytes ? std::error_code() : writeOut();
}

std::error_code PackWriter::writeOut() {
    const std::error_code error = file_->write(buffer_);
    if (error)
        failure_ = cause(error);
    buffer_.clear();
    return error;
}

Expected<void> PackWriter::add(const DigestBytes& digest, std::span<const char> contents,
                               const std::optional<DifferenceBase>& base,
                               const std::optional<Sketch>& sketch) {
    if (failure_)
        return *failure_;
    if (contains(digest))
        return {};
    EncodedBlock encoded;
    const DifferenceBase* against = nullptr;
    if (base && contents.size() >= shortestWithBase && !base->contents.empty()) {
        Expected<std::optional<EncodedBlock>> difference =
            encodeDifference(contents, base->contents, effortFor(std::ssize(contents)));
        if (!difference)
            return std::move(difference).error();
        if (*difference) {
            encoded = std::move(**difference);
            against = &*base;
        }
    }
    if (against == nullptr) {
        if (std::ssize(contents) <= longestShared)
            return addShared(digest, contents, sketch);
        Expected<EncodedBlock> alone = encodeAlone(contents, effortFor(std::ssize(contents)));
        if (!alone)
            return std::move(alone).error();
        encoded = std::move(*alone);
    }
    const std::uint32_t number = tables_.addBlock();
    if (Expected<void> written = noted(writeBlock(number, contents, encoded, against)); !written)
        return written;
    tables_.addEntry(
        {.digest = digest,
         .block = number,
         .position = 0,
         .sizeBytes = static_cast<std::uint32_t>(contents.size())},
        against == nullptr || against->depth <= deepestSketched ? sketch : std::nullopt);
    return {};
}

Expected<void> PackWriter::addShared(const DigestBytes& digest, std::span<const char> contents,
                                     const std::optional<Sketch>& sketch) {
    if (shared_ && std::ssize(shared_->contents) + std::ssize(contents) > sharedBlockBytes) {
        if (Expected<void> written = writeShared(); !written)
            return written;
    }
    if (!shared_)
        shared_.emplace(Shared{.number = tables_.addBlock(), .contents = {}});
    tables_.addEntry({.digest = digest,
                      .block = shared_->number,
                      .position = static_cast<std::uint32_t>(shared_->contents.size()),
                      .sizeBytes = static_cast<std::uint32_t>(contents.size())},
                     sketch);
    shared_->contents.append(contents.data(), contents.size());
    return {};
}

// What could not be written must not be missed by whoever only asks at the end.
Expected<void> PackWriter::noted(Expected<void> result) {
    if (!result)
        failure_ = result.error();
    return result;
}

Expected<void> PackWriter::writeShared() {
    if (!shared_)
        return {};
    const Shared shared = std::move(*std::exchange(shared_, std::nullopt));
    const Expected<EncodedBlock> encoded =
        encodeAlone(shared.contents, effortFor(std::ssize(shared.contents)));
    if (!encoded)
        return noted(encoded.error());
    return noted(writeBlock(shared.number, shared.contents, *encoded, nullptr));
}

Expected<void> PackWriter::writeBlock(std::uint32_t number, std::span<const char> contents,
                                      const EncodedBlock& encoded, const DifferenceBase* base) {
    const std::span<const char> bytes =
        encoded.kind == BlockKind::raw ? contents : encoded.bytes.span();
    if (const std::error_code error = begin())
        return cause(error);
    PackBlock block = {.offset = offset_,
                       .storedBytes = std::ssize(bytes),
                       .sizeBytes = std::ssize(contents),
                       .kind = encoded.kind};
    if (base != nullptr) {
        block.depth = base->depth;
        block.roundStart = base->roundStart;
        block.base = base->digest;
    }
    if (const std::error_code error = write(bytes))
        return cause(error);
    tables_.setBlock(number, block);
    return {};
}

// What it fails with after it has written something stays in the file, where nothing names it.
Expected<PackBlock> PackWriter::writeStreamed(VersionReader& contents, Digest& digest) {
    if (const std::error_code error = begin())
        return folderFailure(error);
    PackBlock block = {.offset = offset_, .sizeBytes = contents.sizeBytes()};
    std::error_code error;
    const auto sink = [&](std::span<const char> bytes) {
        if (!error)
            error = write(bytes);
    };
    std::optional<FrameWriter> frame;
    const Effort effort = effortFor(block.sizeBytes);
    CopyBuffer buffer(contents.sizeBytes());
    bool isFirst = true;
    const Expected<void> read =
        readToEnd(contents, buffer, [&](std::span<const char> bytes) -> Expected<void> {
            if (std::exchange(isFirst, false) && isWorthCompressing(bytes))
                frame.emplace(block.sizeBytes, std::int64_t{bufferBytes}, sink, effort);
            digest.add(bytes);
            if (frame) {
                if (Expected<void> added = frame->add(bytes); !added)
                    return added;
            } else {
                sink(bytes);
            }
            return error ? folderFailure(error) : Expected<void>();
        });
    if (!read)
        return read.error();
    if (frame) {
        if (Expected<void> finished = frame->finish(); !finished)
            return std::move(finished).error();
        block.kind = BlockKind::frame;
    }
    if (error)
        return folderFailure(error);
    block.storedBytes = offset_ - block.offset;
    return block;
}

Expected<DigestBytes> PackWriter::addStreamed(VersionReader& contents,
                                              const std::optional<Sketch>& sketch) {
    Digest hashing;
    const Expected<PackBlock> block = writeStreamed(contents, hashing);
    if (!block)
        return block.error();
    const DigestBytes digest = toDigestBytes(hashing.finish());
    if (contains(digest))
        return digest;
    const std::uint32_t number = tables_.addBlock();
    tables_.setBlock(number, *block);
    tables_.addEntry({.digest = digest,
                      .block = number,
                      .position = 0,
                      .sizeBytes = static_cast<std::uint32_t>(block->sizeBytes)},
                     sketch);
    return digest;
}

Expected<void> PackWriter::copy(const PackReader& from, const PackBlock& block,
                                std::span<const KeptEntry> entries) {
    if (std::all_of(entries.begin(), entries.end(),
                    [this](const KeptEntry& kept) { return contains(kept.entry.digest); }))
        return {};
    if (failure_)
        return *failure_;
    if (const std::error_code error = begin())
        return cause(error);
    PackBlock copied = block;
    copied.offset = offset_;
    std::string bytes;
    for (std::int64_t done = 0; done < block.storedBytes; done += std::ssize(bytes)) {
        bytes.resize(std::min(bufferBytes, static_cast<std::size_t>(block.storedBytes - done)));
        if (Expected<void> read = from.readStored(block, done, bytes); !read)
            return read;
        if (const std::error_code error = write(bytes))
            return cause(error);
    }
    const std::uint32_t number = tables_.addBlock();
    tables_.setBlock(number, copied);
    for (const KeptEntry& kept : entries) {
        PackEntry entry = kept.entry;
        entry.block = number;
        if (!contains(entry.digest))
            tables_.addEntry(entry, kept.sketch);
    }
    return {};
}

int PackWriter::depthOf(const DigestBytes& digest) const {
    const PackEntry* const entry = tables_.find(digest);
    return entry == nullptr ? 0 : tables_.blocks()[entry->block].depth;
}

Expected<std::optional<PackedContents>> PackWriter::find(const DigestBytes& digest) {
    const PackEntry* const entry = tables_.find(digest);
    if (entry == nullptr)
        return std::optional<PackedContents>();
    if (shared_ && entry->block == shared_->number) {
        if (Expected<void> written = writeShared(); !written)
            return std::move(written).error();
    }
    if (const std::error_code error = writeOut())
        return cause(error);
    if (!source_) {
        sys::Outcome<sys::InputFile> file = file_->contents();
        if (!file)
            return cause(file.error());
        source_ = std::make_shared<PackSource>(
            PackSource{.file = std::move(*file), .path = OdString(layout::packsFolder)});
    }
    return placeOf(source_, *entry, tables_.blocks()[entry->block]);
}

// The name that it gave.
sys::Outcome<std::string> PackWriter::publish() {
    PackTrailer trailer;
    const auto add = [this](std::string_view bytes) { return write(bytes); };
    if (const std::error_code error = tables_.write(offset_, add, trailer))
        return error;
    if (const std::error_code error = writeOut())
        return error;
    if (const std::error_code error =
            modifiedNs_ ? file_->setModified(*modifiedNs_) : std::error_code())
        return error;
    if (const std::error_code error = file_->flush())
        return error;
    std::string name = packNameOf(trailer);
    file_->setName(name + layout::packEnding);
    if (const std::error_code error = file_->publish(sys::NewFile::Existing::replace))
        return error;
    if (const std::error_code error = root_.flush(layout::packsFolder))
        return error;
    if (const std::error_code error =
            isFolderNew_ ? root_.flush(layout::metadataFolder) : std::error_code())
        return error;
    return name;
}

Expected<std::string> PackWriter::finish() {
    if (isEmpty())
        return std::string();
    if (const Expected<void> written = writeShared(); !written)
        return cannotWrite(OdString(layout::packsFolder), written.error().message);
    if (failure_)
        return cannotWrite(OdString(layout::packsFolder), failure_->message);
    sys::Outcome<std::string> name = publish();
    if (!name)
        return folderFailure(name.error());
    return std::move(*name);
}

}  // namespace qrv
