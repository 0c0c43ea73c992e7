#include <common/storage/StorageUrl.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/diff/Contents.h>
#include <engine/diff/Lines.h>
#include <engine/storage/StorageMessages.h>

#include <algorithm>
#include <cstddef>
#include <memory>

namespace qrv {

namespace {

constexpr std::size_t largestTextBytes = 10'000'000;

Expected<std::string> readStored(WorkingTree& workingTree, const TreeFile& version) {
    const Expected<std::unique_ptr<VersionReader>> reader =
        workingTree.repository()
            .storages()
            .ofUrl(version.contents)
            .open(workingTree.root(), version.contents);
    if (!reader)
        return reader.error();
    if (*reader == nullptr)
        return notKept(version.contents);
    // One more than there should be, for the end is where the contents are checked.
    std::string bytes(static_cast<std::size_t>(version.sizeBytes) + 1, '\0');
    const Expected<std::size_t> count = (*reader)->read(bytes);
    if (!count)
        return count.error();
    bytes.resize(*count);
    return bytes;
}

Expected<std::string> readWorking(const WorkingTree& workingTree, const OdString& path) {
    sys::Outcome<sys::InputFile> file = workingTree.folder().openFile(path.toNarrow());
    if (!file)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), path, file.error());
    // The file may have changed since it was looked at, and may do so now.
    const sys::Outcome<sys::FileStamp> stamp = file->stamp();
    if (!stamp)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), path, stamp.error());
    std::string bytes(std::min(static_cast<std::size_t>(stamp->sizeBytes), largestTextBytes) + 1,
                      '\0');
    const sys::Outcome<std::size_t> count = file->read(bytes);
    if (!count)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), path, count.error());
    bytes.resize(*count);
    return bytes;
}

}  // namespace

Expected<std::optional<std::string>> readText(WorkingTree& workingTree, const OdString& path,
                                              const TreeFile& version) {
    const bool isDrawing = common::fileToType(path) == common::FileStorage::Drawing;
    if (isDrawing || static_cast<std::size_t>(version.sizeBytes) > largestTextBytes)
        return std::optional<std::string>();
    Expected<std::string> bytes =
        version.isStored() ? readStored(workingTree, version) : readWorking(workingTree, path);
    if (!bytes)
        return bytes.error();
    if (bytes->size() > largestTextBytes || !isText(*bytes))
        return std::optional<std::string>();
    return std::optional(std::move(*bytes));
}

}  // namespace qrv
