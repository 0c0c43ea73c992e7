#include <platform/ut/AtomicWriteInternal.h>
#include <platform/ut/SystemPathInternal.h>
#include <sys/Folder.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace ut {

namespace {

constexpr std::uint32_t permissionsOfANewFile = 0666;

/// What the new file takes over, if there is an old one, and whether that may be replaced.
struct OldFile {
    bool isReplaceable = false;
    std::optional<sys::FileStatus> status;
};

OldFile lookAtOldFile(const sys::Folder& folder, const std::string& name) {
    const sys::Outcome<sys::FileStatus> status = folder.status(name);
    if (!status)
        return {.isReplaceable = status.error() == std::errc::no_such_file_or_directory,
                .status = std::nullopt};
    if (status->kind != sys::FileKind::regular)
        return {.isReplaceable = status->kind == sys::FileKind::link, .status = std::nullopt};
    // The folder alone says whether a file may be replaced. Whoever made it read-only meant what is
    // in it, all the same.
    return {.isReplaceable = !folder.checkWritable(name), .status = *status};
}

std::error_code replaceIn(const sys::Folder& folder, const std::string& name,
                          std::string_view bytes) {
    const OldFile old = lookAtOldFile(folder, name);
    if (!old.isReplaceable)
        return std::make_error_code(std::errc::permission_denied);
    sys::Outcome<sys::NewFile> file =
        folder.newFile(name, old.status ? old.status->permissions : permissionsOfANewFile);
    if (!file)
        return file.error();
    std::error_code error;
    if (old.status)
        error = file->takeRights(old.status->owner, old.status->group, old.status->permissions);
    if (!error)
        error = file->write(bytes);
    // Flushed before it is published, or a power cut could leave the new name with nothing behind
    // it.
    if (!error)
        error = file->flush();
    if (!error)
        error = file->close();
    if (!error)
        error = file->publish(sys::NewFile::Existing::replace);
    return error ? error : folder.flush();
}

}  // namespace

bool replaceFile(const OdString& path, std::string_view bytes) {
    const std::optional<std::string> systemPath = toSystemPath(path);
    if (!systemPath)
        return false;
    const std::size_t nameBegin = systemPath->rfind('/') + 1;  // 0 without a slash
    // All steps go through the open folder, so that one renamed meanwhile is still the same.
    const sys::Outcome<sys::Folder> folder =
        sys::Folder::open(nameBegin == 0 ? "." : systemPath->substr(0, nameBegin));
    return folder && !replaceIn(*folder, systemPath->substr(nameBegin), bytes);
}

}  // namespace ut
