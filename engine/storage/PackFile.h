#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <engine/database/Database.h>
#include <engine/storage/FrameStore.h>
#include <engine/storage/VersionReader.h>
#include <sys/Folder.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qrv {

/// The packed objects, `.qrv/objects.pack`: one SQLite file of zstd frames. An object may be kept
/// as a difference from another packed one, in chains of at most eight. docs/formats/pack-file.md
/// describes the file.
///
/// Operations throw `DatabaseError` when the file cannot be used.
class PackFile {
public:
    static OdString pathOf(const common::RootPath& root);

    /// The pack, or nothing when there is none. On a read-only medium it can be read.
    static std::optional<PackFile> open(const common::RootPath& root);
    /// The same beneath the root's open folder.
    static std::optional<PackFile> open(const sys::Folder& folder, const common::RootPath& root);
    /// The pack for changes, made when it is missing.
    static PackFile openForChange(const common::RootPath& root);
    /// The same beneath the root's open folder.
    static PackFile openForChange(const sys::Folder& folder, const common::RootPath& root);

    bool contains(const std::string& digest);
    /// Null when the object is not in the pack.
    Expected<std::unique_ptr<VersionReader>> read(const std::string& digest);
    /// Every object, oldest first.
    std::vector<Frame> frames() { return frames_.frames(); }
    /// Every object, by digest.
    std::vector<std::string> digests();
    /// Bytes that the frames of an object take in the file; 0 when it is not there.
    std::int64_t storedBytes(const std::string& digest);

    /// Adds an object. It is kept as a difference from `base`, another object of the pack, or,
    /// where its chain of eight is full, from one that `base` builds on, when that halves it at
    /// least; otherwise by itself, as are objects that take more than 256 MiB together with their
    /// base. Runs inside a transaction of the caller's on `database`. Fails when the contents
    /// cannot be read, or are not those of `digest`; then nothing was added.
    Expected<void> add(const std::string& digest, VersionReader& contents,
                       const std::optional<std::string>& base);
    /// Takes objects out; one that is not there is no error. Those kept as differences
    /// from them are written anew. One transaction: all or none.
    Expected<void> remove(const std::vector<std::string>& digests);
    Database& database();

private:
    PackFile(const sys::Folder& folder, const OdString& path, Database::Access access);

    FrameStore frames_;
};

}  // namespace qrv
