#pragma once

#include <common/base/Expected.h>
#include <engine/base/Digest.h>
#include <engine/base/DigestBytes.h>
#include <engine/storage/BlockEncoding.h>
#include <engine/storage/PackReader.h>
#include <engine/storage/PackSource.h>
#include <engine/storage/PackTables.h>
#include <engine/storage/VersionReader.h>
#include <sys/Folder.h>
#include <sys/NewFile.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <system_error>

namespace qrv {

/// Contents that are longer have a block of their own.
inline constexpr std::int64_t longestShared = std::int64_t{64} << 10;
/// How many bytes of contents a block that several share has, about.
inline constexpr std::int64_t sharedBlockBytes = std::int64_t{128} << 10;
/// A pack that has grown so far is full.
inline constexpr std::int64_t fullPackBytes = std::int64_t{1} << 30;

/// An entry that is taken over from another pack.
struct KeptEntry {
    PackEntry entry;
    std::optional<Sketch> sketch;
};

/// Writes one pack, beside the name that it gets at the end; without `finish` it leaves nothing
/// behind. Nothing is written before there are contents.
///
///     PackWriter writer(rootFolder);
///     writer.add(digest, contents, std::nullopt, std::nullopt);
///     writer.finish();
///
/// A failure of `add`, `copy` and `find` gives the bare cause, such as "No space left on device",
/// for a message about whatever was to be kept. After any failure but one of a reader, all that
/// follow fail as well.
class PackWriter {
public:
    /// The folder of the packs is made where it is missing. Also with little effort, the first
    /// contents are compressed with more: what one drawing takes nobody notices. A pack of thorough
    /// effort says of itself that its contents are in order.
    explicit PackWriter(sys::Folder root, Effort effort = Effort::quick);

    /// Adds contents of that digest, unless they are here already. They are kept as a difference
    /// from `base` when that pays. The caller sees to it that nothing builds on more than
    /// `longestChain`, and that contents and base fit into memory twice.
    Expected<void> add(const DigestBytes& digest, std::span<const char> contents,
                       const std::optional<DifferenceBase>& base,
                       const std::optional<Sketch>& sketch);
    /// Adds contents of any length, in a block of their own, and gives their digest. Takes some
    /// 100 MiB of memory. Fails with the error of the reader, or with one that names the folder;
    /// then nothing was added.
    Expected<DigestBytes> addStreamed(VersionReader& contents, const std::optional<Sketch>& sketch);
    /// Takes over a block as it is, with the entries of it that are to be kept and that are not
    /// here already.
    Expected<void> copy(const PackReader& from, const PackBlock& block,
                        std::span<const KeptEntry> entries);

    /// Where contents lie that were added; nothing when they were not. What is waiting for its
    /// block to become full is written then.
    Expected<std::optional<PackedContents>> find(const DigestBytes& digest);
    bool contains(const DigestBytes& digest) const { return tables_.find(digest) != nullptr; }
    /// How many blocks it takes to read contents that were added; 0 when they were not.
    int depthOf(const DigestBytes& digest) const;
    bool isEmpty() const { return tables_.entries().empty(); }
    /// Whether nothing more should be added.
    bool isFull() const;
    /// How long the file is so far, about.
    std::int64_t sizeBytes() const {
        return offset_ + (shared_ ? std::ssize(shared_->contents) : 0);
    }

    /// The time of modification that the pack will have instead of now, in nanoseconds since 1970.
    void setModified(std::int64_t modifiedNs) { modifiedNs_ = modifiedNs; }
    /// Hands everything over to the disk and gives the pack its name, which is the answer; empty
    /// when nothing was added. Nothing may be added afterwards. After a failure, whose message
    /// names the folder, there is the whole pack or none.
    Expected<std::string> finish();

private:
    /// The block that waits for more contents to share it.
    struct Shared {
        std::uint32_t number = 0;
        std::string contents;
    };

    Effort effortFor(std::int64_t sizeBytes);
    std::error_code begin();
    std::error_code write(std::span<const char> bytes);
    std::error_code writeOut();
    sys::Outcome<std::string> publish();
    Expected<void> addShared(const DigestBytes& digest, std::span<const char> contents,
                             const std::optional<Sketch>& sketch);
    Expected<void> writeShared();
    Expected<void> noted(Expected<void> result);
    Expected<void> writeBlock(std::uint32_t number, std::span<const char> contents,
                              const EncodedBlock& encoded, const DifferenceBase* base);
    Expected<PackBlock> writeStreamed(VersionReader& contents, Digest& digest);

    sys::Folder root_;
    Effort effort_;
    std::optional<std::int64_t> modifiedNs_;
    // How many bytes were compressed with more effort than was asked for.
    std::int64_t thoroughBytes_ = 0;
    std::optional<sys::NewFile> file_;
    // Whether the folder itself was made here.
    bool isFolderNew_ = false;
    // How many bytes the file has, those included that still wait in memory.
    std::int64_t offset_ = 0;
    std::string buffer_;
    std::optional<Shared> shared_;
    // Why not everything that was added is in the file.
    std::optional<ErrorMessage> failure_;
    PackTables tables_;
    // For reading what was added.
    std::shared_ptr<const PackSource> source_;
};

}  // namespace qrv
