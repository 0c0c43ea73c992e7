#pragma once

#include <common/base/Expected.h>
#include <engine/base/Bytes.h>
#include <engine/database/Database.h>
#include <engine/storage/FrameTable.h>
#include <engine/storage/VersionReader.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qrv {

/// What the two kinds of files that hold frames differ in.
struct FrameLayout {
    /// Stands in the file's header, so that the one kind is not taken for the other.
    std::int64_t applicationId;
    /// How many frames it takes at most to read one contents.
    std::size_t longestChain;
    /// How long contents and base together may be for a difference. They are held in memory.
    std::int64_t longestSpanBytes;
    /// How large a difference may be, in hundredths of the frame that stands alone.
    int worthPercent;
};

/// A SQLite file of zstd frames, each contents once, by digest: what drawing stores and packs have
/// in common. A frame stands alone, or holds the difference from the contents of an older one.
///
/// Operations throw `DatabaseError` when the file cannot be used, or holds a row that cannot be. No
/// number in the file is believed: a damaged frame is an error of the one who reads it.
class FrameStore {
public:
    /// As the constructor of `FrameTable`.
    FrameStore(std::shared_ptr<Database> database, Database::Access access,
               const FrameLayout& layout);

    Database& database() { return *table_.database(); }
    std::optional<Frame> find(const std::string& digest) { return table_.find(digest); }
    /// The one that was added last.
    std::optional<Frame> newest() { return table_.find(table_.nextNumber() - 1); }
    /// Oldest first.
    std::vector<Frame> frames() { return table_.all(); }
    /// What the frame itself takes in the file.
    std::int64_t storedBytes(const Frame& frame) { return table_.storedBytes(frame); }
    /// Fails when the frame, or one that it builds on, is damaged, and when reading it takes more
    /// memory than there is.
    Expected<std::unique_ptr<VersionReader>> open(const Frame& frame);
    /// For whoever reads all frames, oldest first: the contents that one builds on stay in memory
    /// until the next one is opened, so that each frame is decoded about twice and not up to as
    /// many times as a chain is long.
    void keepBases() { keepsBases_ = true; }

    struct Added {
        Frame frame;
        /// False when the contents were there already.
        bool isNew = false;
    };
    /// Adds contents that continue `previous`: as a difference from it, or, where the chain is
    /// full, from one that it builds on. They stand alone when that is not worth it, and when the
    /// base is damaged. Fails when they cannot be read. Unless it succeeds, nothing changes. Runs
    /// inside a transaction of the caller.
    Expected<Added> add(VersionReader& contents, const std::optional<Frame>& previous);
    /// Takes a frame out; those that build on it are written anew. Fails when they cannot be read.
    /// Runs inside a transaction of the caller, who takes it back after a failure.
    Expected<void> remove(const Frame& frame);

private:
    struct Encoded {
        Bytes frame;
        std::optional<std::int64_t> base;
    };

    /// The contents of a base, as the frame of that digest says.
    struct KnownContents {
        std::string digest;
        std::shared_ptr<const Bytes> contents;
    };

    Expected<std::vector<Frame>> chainOf(const Frame& frame);
    Expected<void> requireMemory(const std::vector<Frame>& chain);
    Expected<std::shared_ptr<const Bytes>> baseContents(std::vector<Frame> chain);
    std::optional<Frame> baseAfter(const Frame& previous);
    Expected<Bytes> contentsOf(const Frame& frame);
    bool isClearlyWorth(std::int64_t differenceBytes, std::int64_t sizeBytes, const Frame& base);
    Expected<Encoded> encode(std::span<const char> contents, const std::optional<Frame>& base);
    Expected<Added> addInMemory(VersionReader& contents, const Frame& previous);
    Expected<Added> addStreamed(VersionReader& contents);
    Expected<void> rebase(const Frame& frame, const std::optional<Frame>& base);

    FrameLayout layout_;
    FrameTable table_;
    KnownContents lastBase_;
    bool keepsBases_ = false;
};

}  // namespace qrv
