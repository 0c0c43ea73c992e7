#pragma once

#include <common/base/Expected.h>
#include <engine/paths/RelativePath.h>
#include <engine/storage/VersionReader.h>
#include <sys/Folder.h>
#include <sys/InputFile.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace qrv {

/// Reads a working file that is to be stored. At the end, size and time are compared with those
/// before: a file that somebody writes to meanwhile is not read, as it may be half the old and half
/// the new.
class WorkingFileReader : public VersionReader {
public:
    static Expected<std::unique_ptr<WorkingFileReader>> open(const sys::Folder& root,
                                                             const RelativePath& path);

    Expected<std::size_t> read(std::span<char> buffer) override;
    std::int64_t sizeBytes() const override { return before_.sizeBytes; }
    /// Of the file when it was opened.
    const sys::FileStamp& stamp() const { return before_; }
    const sys::InputFile& file() const { return file_; }
    /// Whether that is why reading failed.
    bool hasChanged() const { return hasChanged_; }

private:
    WorkingFileReader(OdString path, sys::InputFile file, const sys::FileStamp& before);

    Expected<void> checkUnchanged();

    OdString path_;
    sys::InputFile file_;
    sys::FileStamp before_;
    std::int64_t position_ = 0;
    bool hasChanged_ = false;
};

}  // namespace qrv
