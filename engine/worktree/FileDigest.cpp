#include <engine/base/Digest.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/worktree/FileDigest.h>

#include <cstddef>
#include <memory>
#include <system_error>

namespace qrv {

namespace {

/// Fits the second-level cache.
constexpr std::size_t bufferSizeBytes = 1 << 16;

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
    // Not cleared: most files are much smaller.
    const auto buffer = std::make_unique_for_overwrite<char[]>(bufferSizeBytes);
    for (;;) {
        const sys::Outcome<std::size_t> count = file->read({buffer.get(), bufferSizeBytes});
        if (!count)
            return count.error();
        digest.add({buffer.get(), *count});
        if (*count < bufferSizeBytes)
            return OdString(digest.finish().c_str());
    }
}

Expected<OdString> digestOfFile(const sys::Folder& root, const OdString& path) {
    const sys::Outcome<OdString> digest = tryDigestOfFile(root, path);
    if (!digest)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), path, digest.error());
    return *digest;
}

}  // namespace qrv
