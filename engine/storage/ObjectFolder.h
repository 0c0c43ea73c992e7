#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <engine/storage/PackFile.h>
#include <engine/storage/VersionReader.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>
#include <sys/NewFile.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace qrv {

/// The objects of one repository: those in `.qrv/objects`, those that wait for their names, and
/// those in the pack. Objects are named by their digests, which the caller has checked.
///
/// Everything but making and keeping objects may throw `DatabaseError`, for the pack.
class ObjectFolder {
public:
    ObjectFolder(common::RootPath root, sys::Folder rootFolder);

    /// Opens the folder for new objects, and makes it when it is missing.
    Expected<void> openForChange();
    /// Begins a new object, whose name may not be known yet. After `openForChange`.
    sys::Outcome<sys::NewFile> begin() const;
    /// Whether the new object now shares the blocks of `source`. After one no, the file system is
    /// not asked again.
    bool sharesBlocks(sys::NewFile& object, const sys::InputFile& source);
    /// Takes over a new object that was written and closed. `path` is the working file, for the
    /// messages.
    void keep(const std::string& digest, sys::NewFile object, const OdString& path);
    /// See `ObjectStorage::flush`.
    Expected<void> flush();

    bool contains(const std::string& digest);
    /// The same, and then it counts as new again, so that nothing removes it as long unused.
    bool renew(const std::string& digest);
    /// Whether there is no need to store it: unlike `renew`, sees a file that was cut off.
    bool hasWhole(const std::string& digest, std::int64_t sizeBytes);
    /// Null when it is not there. `url` is for the messages.
    Expected<std::unique_ptr<VersionReader>> read(const std::string& digest, const OdString& url);
    Expected<void> remove(const std::string& digest, const OdString& url);

private:
    struct Waiting {
        sys::NewFile file;
        OdString path;
    };
    using WaitingObjects = std::map<std::string, Waiting>;

    std::error_code openOrMakeFolder();
    Expected<void> flushContents(WaitingObjects& objects) const;
    Expected<void> flushNames();
    /// A name among the objects, as a path from `start`.
    std::string pathOf(const std::string& digest) const;
    const sys::Folder& start() const { return folder_ ? *folder_ : rootFolder_; }
    /// Its size, if it is there with a name and is a regular file.
    std::optional<std::int64_t> looseSize(const std::string& digest) const;
    /// Opens the pack once there is one.
    PackFile* pack();

    common::RootPath root_;
    sys::Folder rootFolder_;
    /// Nothing before the first change.
    std::optional<sys::Folder> folder_;
    /// Whether the folder itself was made here and is not safe on the disk yet.
    bool isNew_ = false;
    bool canShareBlocks_ = true;
    WaitingObjects waiting_;
    std::optional<PackFile> pack_;
};

}  // namespace qrv
