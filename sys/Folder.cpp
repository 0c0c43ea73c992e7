#include <sys/BeneathInternal.h>
#include <sys/CallsInternal.h>
#include <sys/Folder.h>
#include <sys/StatusInternal.h>

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace sys {

namespace {

FileKind kindOf(mode_t mode) {
    if (S_ISREG(mode))
        return FileKind::regular;
    if (S_ISDIR(mode))
        return FileKind::folder;
    return S_ISLNK(mode) ? FileKind::link : FileKind::other;
}

FileStatus toFileStatus(const struct stat& status) {
    return {.kind = kindOf(status.st_mode),
            .number = status.st_ino,
            .sizeBytes = status.st_size,
            .modifiedNs = modifiedNs(status),
            .changedNs = changedNs(status),
            .permissions = permissionsOf(status),
            .owner = status.st_uid,
            .group = status.st_gid};
}

// A path is opened as itself, be it a link, where the name alone would be asked for past the check.
int statusBeneath(int folder, const std::string& path, struct stat& status) {
    if (path.find('/') == std::string::npos && path != "." && refusalOfForm(path) == 0)
        return calls::statusAt(folder, path, status);
    const Handle opened = openBeneath(folder, path, O_PATH | O_NOFOLLOW);
    return opened.isOpen() ? calls::status(opened.number(), status) : -1;
}

std::errc refusalOf(FileKind kind) {
    return kind == FileKind::folder ? std::errc::is_a_directory
                                    : std::errc::operation_not_supported;
}

bool mayStayUnflushed(int errorNumber) {
    return errorNumber == EINVAL || errorNumber == ENOTSUP;
}

// Somebody else may make it at the same moment.
Handle openOrMakeFolder(int folder, const std::string& name) {
    constexpr int flags = O_PATH | O_DIRECTORY;
    Handle opened = openBeneath(folder, name, flags);
    if (opened.isOpen() || errno != ENOENT)
        return opened;
    if (calls::makeFolder(folder, name) < 0 && errno != EEXIST)
        return Handle();
    return openBeneath(folder, name, flags);
}

}  // namespace

Outcome<Folder> Folder::open(const std::string& path) {
    if (path.find('\0') != std::string::npos)
        return std::make_error_code(std::errc::no_such_file_or_directory);
    Handle handle = calls::openAt(AT_FDCWD, path.c_str(), O_RDONLY | O_DIRECTORY);
    if (!handle.isOpen())
        return calls::lastError();
    return Folder(std::move(handle));
}

Outcome<Folder> Folder::openFolder(const std::string& relative) const {
    Handle handle = openBeneath(number(), relative, O_RDONLY | O_DIRECTORY);
    if (!handle.isOpen())
        return calls::lastError();
    return Folder(std::move(handle));
}

Outcome<FileStatus> Folder::status(const std::string& relative) const {
    struct stat status = {};
    if (statusBeneath(number(), relative, status) < 0)
        return calls::lastError();
    return toFileStatus(status);
}

Outcome<FileStamp> Folder::stamp(const std::string& relative) const {
    struct stat status = {};
    if (statusBeneath(number(), relative, status) < 0)
        return calls::lastError();
    return stampOf(status);
}

Outcome<InputFile> Folder::openFile(const std::string& relative) const {
    Handle handle = openBeneath(number(), relative, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW);
    if (!handle.isOpen()) {
        // A socket cannot be opened at all, with a cause that tells nobody anything.
        if (errno == ENXIO)
            return std::make_error_code(refusalOf(FileKind::other));
        return calls::lastError();
    }
    struct stat status = {};
    if (calls::status(handle.number(), status) < 0)
        return calls::lastError();
    if (!S_ISREG(status.st_mode))
        return std::make_error_code(refusalOf(kindOf(status.st_mode)));
    return InputFile(std::move(handle));
}

Outcome<NameInFolder> Folder::openFolderOf(const std::string& relative) const {
    if (const int refusal = relative == "." ? EINVAL : refusalOfForm(relative); refusal != 0)
        return std::error_code(refusal, std::generic_category());
    auto [above, name] = splitPath(relative);
    if (above.empty())
        return NameInFolder{.folder = *this, .name = std::move(name)};
    Outcome<Folder> opened = openFolder(above);
    if (!opened)
        return opened.error();
    return NameInFolder{.folder = std::move(*opened), .name = std::move(name)};
}

Outcome<NewFile> Folder::newFile(const std::string& relative, std::uint32_t permissions) const {
    if (const int refusal = relative == "." ? EINVAL : refusalOfForm(relative); refusal != 0)
        return std::error_code(refusal, std::generic_category());
    auto [folder, name] = splitPath(relative);
    NewFile file(handle_, folder, std::move(name));
    std::error_code error = file.create(permissions);
    if (error == std::errc::no_such_file_or_directory && !folder.empty()) {
        error = makeFolders(folder);
        if (!error)
            error = file.create(permissions);
    }
    if (error)
        return error;
    return file;
}

std::error_code Folder::makeFile(const std::string& relative, std::uint32_t permissions) const {
    Handle made = openBeneath(number(), relative, O_WRONLY | O_CREAT | O_EXCL, permissions);
    return made.isOpen() ? made.close() : calls::lastError();
}

std::string Folder::pathThroughHandle(const std::string& name) const {
    return "/proc/self/fd/" + std::to_string(number()) + '/' + name;
}

std::error_code Folder::removeFile(const std::string& relative) const {
    const Outcome<Place> place = placeOf(number(), relative);
    if (!place)
        return place.error();
    if (calls::removeFile(place->folder, place->name) < 0)
        return calls::lastError();
    return {};
}

std::error_code Folder::rename(const std::string& from, const std::string& to) const {
    const Outcome<Place> source = placeOf(number(), from);
    if (!source)
        return source.error();
    const Outcome<Place> target = placeOf(number(), to);
    if (!target)
        return target.error();
    if (calls::rename(source->folder, source->name, target->folder, target->name) < 0)
        return calls::lastError();
    return {};
}

void Folder::removeEmptyParents(const std::string& relative) const {
    std::string path = splitPath(relative).first;
    while (!path.empty()) {
        const Outcome<Place> place = placeOf(number(), path);
        if (!place || calls::removeFolder(place->folder, place->name) < 0)
            return;
        path = splitPath(path).first;
    }
}

std::error_code Folder::makeFolders(const std::string& relative) const {
    if (const int refusal = refusalOfForm(relative); refusal != 0)
        return {refusal, std::generic_category()};
    if (relative == ".")
        return {};
    Handle above;
    int current = number();
    for (std::size_t begin = 0; begin <= relative.size();) {
        const std::size_t end = std::min(relative.find('/', begin), relative.size());
        above = openOrMakeFolder(current, relative.substr(begin, end - begin));
        if (!above.isOpen())
            return calls::lastError();
        current = above.number();
        begin = end + 1;
    }
    return {};
}

std::error_code Folder::flush(const std::string& relative) const {
    const Handle opened =
        relative == "." ? Handle() : openBeneath(number(), relative, O_RDONLY | O_DIRECTORY);
    if (relative != "." && !opened.isOpen())
        return calls::lastError();
    const int folder = opened.isOpen() ? opened.number() : number();
    if (calls::flush(folder) < 0 && !mayStayUnflushed(errno))
        return calls::lastError();
    return {};
}

std::error_code Folder::flushFileSystem() const {
    return calls::flushFileSystem(number()) < 0 ? calls::lastError() : std::error_code();
}

}  // namespace sys
