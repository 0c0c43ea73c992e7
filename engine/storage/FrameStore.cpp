#include <engine/base/Digest.h>
#include <engine/base/Translation.h>
#include <engine/storage/ChainMemory.h>
#include <engine/storage/FrameReader.h>
#include <engine/storage/FrameStore.h>
#include <engine/storage/OpenFrame.h>
#include <engine/storage/ReadToEnd.h>
#include <engine/storage/Zstd.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace qrv {

namespace {

// A part of a transaction that is rolled back unless it is kept.
class Savepoint {
public:
    explicit Savepoint(Database& database) : database_(database) {
        database_.execute("SAVEPOINT adding");
    }
    Savepoint(const Savepoint&) = delete;
    Savepoint& operator=(const Savepoint&) = delete;
    ~Savepoint() {
        if (isKept_)
            return;
        try {
            database_.execute("ROLLBACK TO adding; RELEASE adding");
        } catch (const DatabaseError&) {
            // SQLite has rolled back the whole transaction then, and its commit will say so.
            isKept_ = true;
        }
    }

    void keep() {
        database_.execute("RELEASE adding");
        isKept_ = true;
    }

private:
    Database& database_;
    bool isKept_ = false;
};

}  // namespace

FrameStore::FrameStore(std::shared_ptr<Database> database, Database::Access access,
                       const FrameLayout& layout)
    : layout_(layout), table_(std::move(database), access, layout.applicationId) {
}

// The frame itself, the one that it was made against, and so on to one that stands alone.
Expected<std::vector<Frame>> FrameStore::chainOf(const Frame& frame) {
    std::vector<Frame> chain = {frame};
    while (chain.back().base) {
        std::optional<Frame> base = table_.find(*chain.back().base);
        if (!base)
            return damagedFrame(database(), frame, tr(L"one that it builds on is missing"));
        if (chain.size() == layout_.longestChain)
            return damagedFrame(database(), frame, tr(L"it builds on too many others"));
        // Both are held in memory, and no difference is made of what is longer together.
        if (base->sizeBytes > layout_.longestSpanBytes)
            return damagedFrame(database(), frame, tr(L"one that it builds on is too long"));
        if (chain.back().sizeBytes > layout_.longestSpanBytes - base->sizeBytes)
            return damagedFrame(database(), frame, tr(L"its size is impossible"));
        chain.push_back(std::move(*base));
    }
    return chain;
}

Expected<void> FrameStore::requireMemory(const std::vector<Frame>& chain) {
    std::vector<std::int64_t> sizes;
    sizes.reserve(chain.size());
    for (const Frame& frame : chain)
        sizes.push_back(frame.sizeBytes);
    return requireMemoryFor(sizes, chain.front().digest, database().path());
}

// The contents that the first frame of the chain builds on; null when there are none.
Expected<std::shared_ptr<const Bytes>> FrameStore::baseContents(std::vector<Frame> chain) {
    const auto known = std::find_if(chain.begin() + 1, chain.end(), [this](const Frame& base) {
        return lastBase_.contents && base.digest == lastBase_.digest;
    });
    std::shared_ptr<const Bytes> contents;
    if (known != chain.end())
        contents = lastBase_.contents;
    lastBase_ = {};
    const std::string digest = chain.size() > 1 ? chain[1].digest : "";
    for (chain.erase(known, chain.end()); chain.size() > 1; chain.pop_back()) {
        Expected<std::unique_ptr<FrameReader>> reader = openFrame(
            table_.database(), chain.back(), std::move(contents), FrameReader::Check::sizeOnly);
        if (!reader)
            return std::move(reader).error();
        Expected<Bytes> whole = readWhole(**reader);
        if (!whole)
            return std::move(whole).error();
        contents = std::make_shared<const Bytes>(std::move(*whole));
    }
    if (keepsBases_)
        lastBase_ = {.digest = digest, .contents = contents};
    return contents;
}

Expected<std::unique_ptr<VersionReader>> FrameStore::open(const Frame& frame) {
    Expected<std::vector<Frame>> chain = chainOf(frame);
    if (!chain)
        return std::move(chain).error();
    if (Expected<void> isEnough = requireMemory(*chain); !isEnough)
        return std::move(isEnough).error();
    Expected<std::shared_ptr<const Bytes>> base = baseContents(std::move(*chain));
    if (!base)
        return std::move(base).error();
    Expected<std::unique_ptr<FrameReader>> reader =
        openFrame(table_.database(), frame, std::move(*base), FrameReader::Check::digest);
    if (!reader)
        return std::move(reader).error();
    return std::unique_ptr<VersionReader>(std::move(*reader));
}

Expected<Bytes> FrameStore::contentsOf(const Frame& frame) {
    Expected<std::unique_ptr<VersionReader>> reader = open(frame);
    if (!reader)
        return std::move(reader).error();
    return readWhole(**reader);
}

// What the next frame is made against. Where the chain of `previous` is full, a new one branches
// off as near to its beginning as possible, but only once from each frame: so one frame that stands
// alone serves 136 revisions with chains of 16, and none of them is a difference over more than 16.
std::optional<Frame> FrameStore::baseAfter(const Frame& previous) {
    Expected<std::vector<Frame>> chain = chainOf(previous);
    if (!chain)
        return std::nullopt;
    if (chain->size() < layout_.longestChain)
        return previous;
    for (; chain->size() > 1; chain->pop_back()) {
        if (table_.dependentsOf(chain->back()).size() < 2)
            return chain->back();
    }
    return std::nullopt;
}

// Whether the difference is so small that the frame that stands alone need not be made to compare:
// the one that the base builds on tells roughly how large it would be.
bool FrameStore::isClearlyWorth(std::int64_t differenceBytes, std::int64_t sizeBytes,
                                const Frame& base) {
    const Expected<std::vector<Frame>> chain = chainOf(base);
    if (!chain || chain->back().sizeBytes == 0)
        return false;
    const double ratio = static_cast<double>(table_.storedBytes(chain->back())) /
                         static_cast<double>(chain->back().sizeBytes);
    return static_cast<double>(differenceBytes) * 2 * 100 <=
           ratio * static_cast<double>(sizeBytes) * layout_.worthPercent;
}

Expected<FrameStore::Encoded> FrameStore::encode(std::span<const char> contents,
                                                 const std::optional<Frame>& base) {
    const auto size = static_cast<std::int64_t>(contents.size());
    std::optional<Bytes> difference;
    if (base && base->sizeBytes > 0 && base->sizeBytes + size <= layout_.longestSpanBytes) {
        if (const Expected<Bytes> baseContents = contentsOf(*base)) {
            Expected<Bytes> made = compressFrame(contents, baseContents->span());
            if (!made)
                return std::move(made).error();
            difference = std::move(*made);
        }
    }
    if (difference && isClearlyWorth(difference->size(), size, *base))
        return Encoded{.frame = std::move(*difference), .base = base->number};
    Expected<Bytes> alone = compressFrame(contents);
    if (!alone)
        return std::move(alone).error();
    if (difference && difference->size() * 100 <= alone->size() * layout_.worthPercent)
        return Encoded{.frame = std::move(*difference), .base = base->number};
    return Encoded{.frame = std::move(*alone), .base = std::nullopt};
}

Expected<FrameStore::Added> FrameStore::add(VersionReader& contents,
                                            const std::optional<Frame>& previous) {
    const bool fits =
        previous && previous->sizeBytes <= layout_.longestSpanBytes - contents.sizeBytes();
    Savepoint savepoint(database());
    Expected<Added> added = fits ? addInMemory(contents, *previous) : addStreamed(contents);
    if (added && added->isNew)
        savepoint.keep();
    return added;
}

Expected<FrameStore::Added> FrameStore::addInMemory(VersionReader& contents,
                                                    const Frame& previous) {
    const Expected<Bytes> bytes = readWhole(contents);
    if (!bytes)
        return bytes.error();
    const std::string digest = Digest::of(bytes->view());
    if (std::optional<Frame> known = table_.find(digest))
        return Added{.frame = std::move(*known), .isNew = false};
    Expected<Encoded> encoded = encode(bytes->span(), baseAfter(previous));
    if (!encoded)
        return std::move(encoded).error();
    Frame frame{.number = table_.nextNumber(),
                .digest = digest,
                .sizeBytes = bytes->size(),
                .base = encoded->base};
    table_.add(frame);
    table_.addPieces(frame.number, encoded->frame.span());
    return Added{.frame = std::move(frame), .isNew = true};
}

Expected<FrameStore::Added> FrameStore::addStreamed(VersionReader& contents) {
    Frame frame{.number = table_.nextNumber(),
                .digest = {},
                .sizeBytes = contents.sizeBytes(),
                .base = std::nullopt};
    std::int64_t position = 0;
    FrameWriter writer(frame.sizeBytes, pieceBytes, [&](std::span<const char> bytes) {
        table_.addPiece(frame.number, position++, bytes);
    });
    Digest digest;
    CopyBuffer buffer(frame.sizeBytes);
    const Expected<void> read = readToEnd(contents, buffer, [&](std::span<const char> bytes) {
        digest.add(bytes);
        return writer.add(bytes);
    });
    if (!read)
        return read.error();
    if (Expected<void> finished = writer.finish(); !finished)
        return std::move(finished).error();
    frame.digest = digest.finish();
    if (std::optional<Frame> known = table_.find(frame.digest))
        return Added{.frame = std::move(*known), .isNew = false};
    table_.add(frame);
    return Added{.frame = std::move(frame), .isNew = true};
}

Expected<void> FrameStore::remove(const Frame& frame) {
    std::optional<Frame> heir;
    if (frame.base)
        heir = table_.find(*frame.base);
    for (const Frame& dependent : table_.dependentsOf(frame)) {
        if (Expected<void> rebased = rebase(dependent, heir); !rebased)
            return rebased;
        // Without an older one, the first of them stands alone and the others build on it.
        if (!heir)
            heir = dependent;
    }
    table_.remove(frame.number);
    return {};
}

Expected<void> FrameStore::rebase(const Frame& frame, const std::optional<Frame>& base) {
    const Expected<Bytes> contents = contentsOf(frame);
    if (!contents)
        return contents.error();
    Expected<Encoded> encoded = encode(contents->span(), base);
    if (!encoded)
        return std::move(encoded).error();
    table_.removePieces(frame.number);
    table_.addPieces(frame.number, encoded->frame.span());
    table_.changeBase(frame.number, encoded->base);
    return {};
}

}  // namespace qrv
