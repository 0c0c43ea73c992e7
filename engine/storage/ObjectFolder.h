#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <engine/storage/PackFile.h>
#include <engine/storage/VersionReader.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>
#include <sys/InputFile.h>
#include <sys/NewFile.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace qrv {

/// The objects of one repository that lie outside the packs: those in `.qrv/objects`, of which only
/// such are added as share their blocks with the working file, those that wait for their names, and
/// those that earlier programs have packed. Objects are named by their digests, which the caller
/// has checked.
///
/// Everything but adding objects may throw `DatabaseError`, for the old pack.
class ObjectFolder {
public:
    ObjectFolder(common::RootPath root, sys::Folder rootFolder);

    /// Whether the file system lets files share blocks, as far as the first try tells.
    bool canShareBlocks(const sys::InputFile& source);
    /// Makes an object that shares the blocks of the source. Nothing when the file system cannot do
    /// that after all.
    Expected<std::optional<sys::NewFile>> share(const sys::InputFile& source, const OdString& path);
    /// Takes over a new object, which has a name only after `flush`. `path` is the working file,
    /// for the messages.
    Expected<void> keep(const std::string& digest, sys::NewFile object, const OdString& path);
    /// Hands all objects over to the disk and gives them their names. After a failure each of them
    /// is there as a whole or not at all, and those that are not are forgotten.
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

    Expected<void> openForChange();
    std::error_code openOrMakeFolder();
    Expected<void> flushContents(WaitingObjects& objects) const;
    Expected<void> flushNames();
    /// A name among the objects, as a path from `start`.
    std::string pathOf(const std::string& digest) const;
    const sys::Folder& start() const { return folder_ ? *folder_ : rootFolder_; }
    /// Its size, if it is there with a name and is a regular file.
    std::optional<std::int64_t> looseSize(const std::string& digest) const;
    bool isNowhere();
    /// Opens the old pack once there is one.
    PackFile* pack();

    common::RootPath root_;
    sys::Folder rootFolder_;
    /// Nothing before the first change.
    std::optional<sys::Folder> folder_;
    /// Whether the folder itself was made here and is not safe on the disk yet.
    bool isNew_ = false;
    std::optional<bool> canShareBlocks_;
    /// Whether there was neither a folder nor an old pack when something was to be stored.
    std::optional<bool> isNowhere_;
    WaitingObjects waiting_;
    std::optional<PackFile> pack_;
};

}  // namespace qrv
