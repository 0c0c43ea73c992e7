#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/PathParts.h>
#include <engine/storage/HostStorage.h>
#include <engine/storage/ReadToEnd.h>
#include <engine/storage/StorageMessages.h>

#include <optional>
#include <string>
#include <utility>

namespace qrv {

namespace {

/// The file that one of this name replaces, if there is one; an error when none can have the name.
sys::Outcome<std::optional<sys::FileStatus>> replacedFile(const sys::Folder& folder,
                                                          const std::string& name) {
    const sys::Outcome<sys::FileStatus> status = folder.status(name);
    if (!status && status.error() != std::errc::no_such_file_or_directory)
        return status.error();
    if (status && status->kind == sys::FileKind::folder)
        return std::make_error_code(std::errc::is_a_directory);
    if (!status || status->kind != sys::FileKind::regular)
        return std::optional<sys::FileStatus>();
    return std::optional(*status);
}

sys::Outcome<sys::NewFile> newFileLikeOld(const sys::Folder& folder, const std::string& name) {
    const sys::Outcome<std::optional<sys::FileStatus>> old = replacedFile(folder, name);
    if (!old)
        return old.error();
    sys::Outcome<sys::NewFile> file =
        folder.newFile(name, *old ? (*old)->permissions : workingFilePermissions);
    if (!file || !*old)
        return file;
    const std::error_code error =
        file->takeRights((*old)->owner, (*old)->group, (*old)->permissions);
    if (error)
        return error;
    return file;
}

/// `target` is the name for people.
Expected<sys::NewFile> writeBeside(const sys::Folder& folder, const std::string& name,
                                   const OdString& target, VersionReader& version) {
    sys::Outcome<sys::NewFile> file = newFileLikeOld(folder, name);
    if (!file)
        return cannotWrite(target, causeOf(file.error()));
    CopyBuffer buffer(version.sizeBytes());
    const Expected<void> written =
        readToEnd(version, buffer, [&](std::span<const char> bytes) -> Expected<void> {
            if (const std::error_code error = file->write(bytes))
                return cannotWrite(target, causeOf(error));
            return {};
        });
    if (!written)
        return written.error();
    if (const std::error_code error = file->close())
        return cannotWrite(target, causeOf(error));
    return std::move(*file);
}

/// Gives the file its name for good.
std::error_code publishForGood(sys::NewFile& file, const sys::Folder& folder,
                               const std::string& parent, sys::NewFile::Existing existing) {
    if (const std::error_code error = file.flush())
        return error;
    if (const std::error_code error = file.publish(existing))
        return error;
    return folder.flush(parent);
}

constexpr sys::NewFile::Existing replace = sys::NewFile::Existing::replace;

}  // namespace

Expected<sys::Folder> HostStorage::folderOf(const common::RootPath& root) {
    const auto known = folders_.find(root.path());
    if (known != folders_.end())
        return known->second;
    sys::Outcome<sys::Folder> folder = sys::Folder::open(root.path().toNarrow());
    if (!folder)
        return ErrorMessage{OdString::format(tr(L"The folder '%ls' cannot be opened: %ls"),
                                             printable(root.path()), causeOf(folder.error()))};
    return folders_.emplace(root.path(), std::move(*folder)).first->second;
}

Expected<PacksInUse*> HostStorage::packsInUse(const common::RootPath& root) {
    const auto known = packs_->find(root.path());
    if (known != packs_->end())
        return &known->second;
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    return &packs_->try_emplace(root.path(), *folder).first->second;
}

Expected<Packs*> HostStorage::packsOf(const common::RootPath& root) {
    const Expected<PacksInUse*> inUse = packsInUse(root);
    return inUse ? Expected<Packs*>(&(*inUse)->packs) : inUse.error();
}

Expected<void> HostStorage::flush(const common::RootPath& root) {
    const Expected<Packs*> packs = packsOf(root);
    if (!packs)
        return packs.error();
    return (*packs)->flush();
}

Expected<OdString> HostStorage::store(const common::RootPath& root, const OdString& path) {
    const Expected<RelativePath> checked = RelativePath::check(path);
    if (!checked)
        return checked.error();
    Expected<StoredFile> stored = storeFile(root, *checked);
    if (!stored)
        return stored.error();
    return std::move(stored->url);
}

Expected<sys::NewFile> HostStorage::prepare(const common::RootPath& root, const OdString& url,
                                            const RelativePath& path) {
    const Expected<std::unique_ptr<VersionReader>> version = open(root, url);
    if (!version)
        return version.error();
    if (*version == nullptr)
        return notKept(url);
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    return writeBeside(*folder, path.bytes(), path.text(), **version);
}

Expected<void> HostStorage::exportBelow(const common::RootPath& root, const OdString& url,
                                        const sys::Folder& target, const RelativePath& path,
                                        sys::NewFile::Existing existing) {
    const Expected<std::unique_ptr<VersionReader>> version = open(root, url);
    if (!version)
        return version.error();
    if (*version == nullptr)
        return notKept(url);
    Expected<sys::NewFile> file = writeBeside(target, path.bytes(), path.text(), **version);
    if (!file)
        return file.error();
    if (const std::error_code error =
            publishForGood(*file, target, qrv::folderOf(path.text()).toNarrow(), existing))
        return cannotWrite(path.text(), causeOf(error));
    return {};
}

Expected<void> HostStorage::exportTo(const common::RootPath& root, const OdString& url,
                                     const OdString& target) {
    const Expected<std::unique_ptr<VersionReader>> version = open(root, url);
    if (!version)
        return version.error();
    if (*version == nullptr)
        return notKept(url);
    const std::string path = target.toNarrow();
    const std::size_t name = path.rfind('/') + 1;  // 0 without a slash
    const sys::Outcome<sys::Folder> folder =
        sys::Folder::open(name == 0 ? "." : path.substr(0, name));
    if (!folder)
        return cannotWrite(target, causeOf(folder.error()));
    Expected<sys::NewFile> file = writeBeside(*folder, path.substr(name), target, **version);
    if (!file)
        return file.error();
    if (const std::error_code error = publishForGood(*file, *folder, ".", replace))
        return cannotWrite(target, causeOf(error));
    return {};
}

Expected<bool> HostStorage::restore(const common::RootPath& root, const OdString& url,
                                    const OdString& path) {
    const Expected<RelativePath> checked = RelativePath::check(path);
    if (!checked)
        return checked.error();
    const Expected<std::unique_ptr<VersionReader>> version = open(root, url);
    if (!version)
        return version.error();
    if (*version == nullptr)
        return false;
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    Expected<sys::NewFile> file = writeBeside(*folder, checked->bytes(), path, **version);
    if (!file)
        return file.error();
    if (const std::error_code error =
            publishForGood(*file, *folder, qrv::folderOf(checked->text()).toNarrow(), replace))
        return cannotWrite(path, causeOf(error));
    return true;
}

Expected<common::DiffHandles> HostStorage::compare(const common::RootPath&, const OdString& url,
                                                   const OdString& otherUrl) {
    const Expected<CheckedUrl> one = CheckedUrl::check(url);
    if (!one)
        return one.error();
    const Expected<CheckedUrl> other = CheckedUrl::check(otherUrl);
    if (!other)
        return other.error();
    if (one->digest() == other->digest())
        return common::DiffHandles();
    return ErrorMessage{
        tr(L"The two versions differ, but this program does not look into drawings")};
}

Expected<void> HostStorage::verify(const common::RootPath& root, const OdString& url) {
    const Expected<std::unique_ptr<VersionReader>> version = open(root, url);
    if (!version)
        return version.error();
    if (*version == nullptr)
        return notKept(url);
    return readToEnd(**version);
}

}  // namespace qrv
