#include <engine/base/Digest.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/storage/ReadToEnd.h>
#include <engine/worktree/FileDigest.h>

#include <span>
#include <system_error>

namespace qrv {

namespace {

/// A folder of that name is no file, and below a file there is none.
bool isAbsence(std::error_code error) {
    return sys::meansAbsent(error) || error == std::errc::is_a_directory;
}

}  // namespace

sys::Outcome<OdString> tryDigestOfFile(const sys::Folder& root, const OdString& path) {
    sys::Outcome<sys::InputFile> file = root.openFile(path.toNarrow());
    if (!file && isAbsence(file.error()))
        return OdString();
    if (!file)
        return file.error();
    Digest digest;
    CopyBuffer buffer;
    const std::error_code error = readToEnd(*file, buffer, [&](std::span<const char> bytes) {
        digest.add(bytes);
        return std::error_code();
    });
    if (error)
        return error;
    return OdString::fromNarrow(digest.finish());
}

Expected<OdString> digestOfFile(const sys::Folder& root, const OdString& path) {
    const sys::Outcome<OdString> digest = tryDigestOfFile(root, path);
    if (!digest)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), path, digest.error());
    return *digest;
}

}  // namespace qrv
