#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/storage/StorageMessages.h>
#include <engine/storage/WorkingFileReader.h>
#include <sys/Interruption.h>

#include <algorithm>
#include <utility>

namespace qrv {

Expected<std::unique_ptr<WorkingFileReader>> WorkingFileReader::open(const sys::Folder& root,
                                                                     const RelativePath& path) {
    sys::Outcome<sys::InputFile> file = root.openFile(path.bytes());
    if (!file)
        return cannotStore(path.text(), causeOf(file.error()));
    const sys::Outcome<sys::FileStamp> stamp = file->stamp();
    if (!stamp)
        return cannotStore(path.text(), causeOf(stamp.error()));
    return std::unique_ptr<WorkingFileReader>(
        new WorkingFileReader(path.text(), std::move(*file), *stamp));
}

WorkingFileReader::WorkingFileReader(OdString path, sys::InputFile file,
                                     const sys::FileStamp& before)
    : path_(std::move(path)), file_(std::move(file)), before_(before) {
}

Expected<std::size_t> WorkingFileReader::read(std::span<char> buffer) {
    // A large file takes long, and what was written of it so far is only a temporary file.
    if (sys::Interruption::isWanted())
        return ErrorMessage{tr(L"Interrupted")};
    // What somebody appends meanwhile is not of interest: the file has changed then.
    const auto left = static_cast<std::size_t>(before_.sizeBytes - position_);
    const std::size_t wanted = std::min(buffer.size(), left);
    const sys::Outcome<std::size_t> count = file_.read(buffer.first(wanted));
    if (!count)
        return cannotStore(path_, causeOf(count.error()));
    position_ += static_cast<std::int64_t>(*count);
    if (*count < buffer.size()) {
        if (Expected<void> unchanged = checkUnchanged(); !unchanged)
            return std::move(unchanged).error();
    }
    return *count;
}

Expected<void> WorkingFileReader::checkUnchanged() {
    const sys::Outcome<sys::FileStamp> after = file_.stamp();
    if (!after)
        return cannotStore(path_, causeOf(after.error()));
    hasChanged_ = *after != before_ || position_ != before_.sizeBytes;
    if (hasChanged_)
        return cannotStore(path_, tr(L"it changes while it is read"));
    return {};
}

}  // namespace qrv
