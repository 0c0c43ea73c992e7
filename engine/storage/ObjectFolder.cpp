#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/storage/Age.h>
#include <engine/storage/LooseObject.h>
#include <engine/storage/ObjectFolder.h>
#include <engine/storage/StorageMessages.h>

#include <chrono>
#include <cstddef>
#include <utility>

namespace qrv {

namespace {

constexpr std::chrono::hours leftoverAge{24};
// Nobody needs to write to an object again.
constexpr std::uint32_t objectPermissions = 0444;

// Up to here the files are flushed one by one. More of them are flushed with everything else that
// waits for the disk, which is then the smaller work.
constexpr std::size_t fewObjects = 8;

}  // namespace

ObjectFolder::ObjectFolder(common::RootPath root, sys::Folder rootFolder)
    : root_(std::move(root)), rootFolder_(std::move(rootFolder)) {
}

std::error_code ObjectFolder::openOrMakeFolder() {
    sys::Outcome<sys::Folder> folder = rootFolder_.openFolder(layout::objectsFolder);
    if (folder.error() == std::errc::no_such_file_or_directory) {
        if (const std::error_code error = rootFolder_.makeFolders(layout::objectsFolder))
            return error;
        isNew_ = true;
        folder = rootFolder_.openFolder(layout::objectsFolder);
    }
    if (!folder)
        return folder.error();
    folder_ = *folder;
    return {};
}

Expected<void> ObjectFolder::openForChange() {
    if (folder_)
        return {};
    if (const std::error_code error = openOrMakeFolder())
        return ErrorMessage{OdString::format(
            tr(L"The folder '%ls' cannot be opened: %ls"),
            printable(root_.pathTo(OdString(layout::objectsFolder))), causeOf(error))};
    folder_->removeLeftovers(".", leftoverAge);
    return {};
}

// Tried beside the folder, which is not made for nothing.
bool ObjectFolder::canShareBlocks(const sys::InputFile& source) {
    if (!canShareBlocks_) {
        sys::Outcome<sys::NewFile> trial =
            rootFolder_.newFile(std::string(layout::objectsFolder) + "-trial", objectPermissions);
        canShareBlocks_ = trial && !trial->shareBlocks(source);
    }
    return *canShareBlocks_;
}

Expected<std::optional<sys::NewFile>> ObjectFolder::share(const sys::InputFile& source,
                                                          const OdString& path) {
    if (Expected<void> opened = openForChange(); !opened)
        return std::move(opened).error();
    sys::Outcome<sys::NewFile> object = folder_->newFile("object", objectPermissions);
    if (!object)
        return cannotStore(path, causeOf(object.error()));
    if (object->shareBlocks(source))
        return std::optional<sys::NewFile>();
    return std::optional(std::move(*object));
}

Expected<void> ObjectFolder::keep(const std::string& digest, sys::NewFile object,
                                  const OdString& path) {
    if (const std::error_code error = object.close())
        return cannotStore(path, causeOf(error));
    object.setName(digest);
    waiting_.insert_or_assign(digest, Waiting{.file = std::move(object), .path = path});
    return {};
}

Expected<void> ObjectFolder::flushContents(WaitingObjects& objects) const {
    if (objects.size() > fewObjects) {
        if (const std::error_code error = folder_->flushFileSystem())
            return cannotWrite(root_.pathTo(OdString(layout::objectsFolder)), causeOf(error));
        return {};
    }
    for (auto& [digest, object] : objects) {
        if (const std::error_code error = object.file.flush())
            return cannotStore(object.path, causeOf(error));
    }
    return {};
}

Expected<void> ObjectFolder::flushNames() {
    std::error_code error = folder_->flush();
    if (!error && isNew_)
        error = rootFolder_.flush(layout::metadataFolder);
    if (error)
        return cannotWrite(root_.pathTo(OdString(layout::objectsFolder)), causeOf(error));
    isNew_ = false;
    return {};
}

Expected<void> ObjectFolder::flush() {
    // On every way out of here, what has no name by then is dropped.
    WaitingObjects objects = std::exchange(waiting_, {});
    if (objects.empty())
        return {};
    if (Expected<void> flushed = flushContents(objects); !flushed)
        return flushed;
    for (auto& [digest, object] : objects) {
        // Another process may have stored the same: then the one file takes the other's place.
        if (const std::error_code error = object.file.publish(sys::NewFile::Existing::replace))
            return cannotStore(object.path, causeOf(error));
    }
    return flushNames();
}

bool ObjectFolder::contains(const std::string& digest) {
    if (waiting_.contains(digest) || looseSize(digest))
        return true;
    PackFile* const packed = pack();
    return packed != nullptr && packed->contains(digest);
}

bool ObjectFolder::renew(const std::string& digest) {
    if (waiting_.contains(digest))
        return true;
    if (looseSize(digest))
        return !start().refresh(pathOf(digest), ageToRefresh);
    PackFile* const packed = pack();
    return packed != nullptr && packed->contains(digest) &&
           !rootFolder_.refresh(layout::oldPackPath, ageToRefresh);
}

// Asked once: whoever stores holds the lock, so nobody else adds anything.
bool ObjectFolder::isNowhere() {
    if (!isNowhere_) {
        const sys::Outcome<sys::FileStatus> folder = rootFolder_.status(layout::objectsFolder);
        isNowhere_ = !folder && sys::meansAbsent(folder.error()) && pack() == nullptr;
    }
    return *isNowhere_ && waiting_.empty() && !folder_;
}

bool ObjectFolder::hasWhole(const std::string& digest, std::int64_t sizeBytes) {
    if (isNowhere())
        return false;
    return looseSize(digest).value_or(sizeBytes) == sizeBytes && renew(digest);
}

Expected<std::unique_ptr<VersionReader>> ObjectFolder::read(const std::string& digest,
                                                            const OdString& url) {
    const auto waiting = waiting_.find(digest);
    sys::Outcome<sys::InputFile> file = waiting != waiting_.end()
                                            ? waiting->second.file.contents()
                                            : start().openFile(pathOf(digest));
    if (file)
        return readLooseObject(std::move(*file), digest, url);
    if (file.error() != std::errc::no_such_file_or_directory)
        return cannotRead(url, causeOf(file.error()));
    PackFile* const packed = pack();
    if (packed == nullptr)
        return std::unique_ptr<VersionReader>();
    return packed->read(digest);
}

Expected<void> ObjectFolder::remove(const std::string& digest, const OdString& url) {
    waiting_.erase(digest);
    const std::error_code error = start().removeFile(pathOf(digest));
    if (error && error != std::errc::no_such_file_or_directory)
        return ErrorMessage{OdString::format(tr(L"The stored version '%ls' cannot be removed: %ls"),
                                             url, causeOf(error))};
    PackFile* const packed = pack();
    if (packed == nullptr || !packed->contains(digest))
        return {};
    return PackFile::openForChange(rootFolder_, root_).remove({digest});
}

std::string ObjectFolder::pathOf(const std::string& digest) const {
    return folder_ ? digest : layout::objectPath(digest);
}

std::optional<std::int64_t> ObjectFolder::looseSize(const std::string& digest) const {
    const sys::Outcome<sys::FileStatus> status = start().status(pathOf(digest));
    const bool isObject = status && status->kind == sys::FileKind::regular;
    return isObject ? std::optional(status->sizeBytes) : std::nullopt;
}

PackFile* ObjectFolder::pack() {
    if (!pack_)
        pack_ = PackFile::open(rootFolder_, root_);
    return pack_ ? &*pack_ : nullptr;
}

}  // namespace qrv
