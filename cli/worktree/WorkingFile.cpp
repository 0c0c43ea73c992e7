#include <cli/Translation.h>
#include <cli/storage/Digest.h>
#include <cli/worktree/WorkingFile.h>
#include <cli/worktree/Workspace.h>

#include <cstddef>
#include <span>
#include <vector>

namespace qrv_cli {

namespace {

constexpr std::size_t bufferSizeBytes = 1 << 18;

ErrorMessage unreadable(const OdString& path, std::error_code cause) {
    return systemFailure(tr(L"'%ls' cannot be read: %ls"), path, cause);
}

/// A folder of that name is no file, and below a file there is none.
bool isAbsence(std::error_code error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::is_a_directory ||
           error == std::errc::not_a_directory;
}

}  // namespace

Expected<OdString> digestOfFile(const sys::Folder& root, const OdString& path) {
    sys::Outcome<sys::InputFile> file = root.openFile(path.toNarrow());
    if (!file && isAbsence(file.error()))
        return OdString();
    if (!file)
        return unreadable(path, file.error());
    Digest digest;
    std::vector<char> buffer(bufferSizeBytes);
    for (;;) {
        const sys::Outcome<std::size_t> count = file->read(buffer);
        if (!count)
            return unreadable(path, count.error());
        digest.add(std::span(buffer).first(*count));
        if (*count < buffer.size())
            return OdString(digest.finish().c_str());
    }
}

}  // namespace qrv_cli
