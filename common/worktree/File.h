#pragma once

#include <common/base/Export.h>
#include <common/worktree/FileChange.h>
#include <platform/kernel/OdString.h>

#include <memory>

namespace common {

/// A file of the working tree.
struct QRV_COMMON_EXPORT File {
    File() = default;
    /// Takes the path as it is.
    explicit File(const OdString& relativePath);
    File(const File&) = default;
    File(File&&) noexcept = default;
    File& operator=(const File&) = default;
    File& operator=(File&&) noexcept = default;
    virtual ~File();

    OdString path;  ///< relative to the repository's root
};

/// A file whose content is stored.
struct QRV_COMMON_EXPORT RepoFile : File {
    /// A file that was not renamed.
    RepoFile(const OdString& relativePath, const OdString& storageUrl);
    /// Takes over `previous`, the file's identity before it was renamed.
    RepoFile(const OdString& relativePath, const OdString& storageUrl,
             std::unique_ptr<File> previous);
    RepoFile(const RepoFile&) = default;
    RepoFile(RepoFile&&) noexcept = default;
    RepoFile& operator=(const RepoFile&) = default;
    RepoFile& operator=(RepoFile&&) noexcept = default;
    ~RepoFile() override;

    OdString url;                ///< the storage URL of the content, kept verbatim
    std::shared_ptr<File> file;  ///< the identity before a renaming, or empty; copies share it
};

/// A file selected for the next commit.
struct QRV_COMMON_EXPORT StagedFile {
    /// Takes both as they are.
    StagedFile(const OdString& relativePath, FileChange fileChange);

    OdString path;      ///< relative to the repository's root
    FileChange change;  ///< what the commit does to it

    friend bool operator==(const StagedFile&, const StagedFile&) = default;
};

}  // namespace common
