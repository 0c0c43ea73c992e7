#include <common/worktree/File.h>

#include <utility>

namespace common {

File::File(const OdString& relativePath) : path(relativePath) {
}

File::~File() = default;

RepoFile::RepoFile(const OdString& relativePath, const OdString& storageUrl)
    : File(relativePath), url(storageUrl) {
}

RepoFile::RepoFile(const OdString& relativePath, const OdString& storageUrl,
                   std::unique_ptr<File> previous)
    : File(relativePath), url(storageUrl), file(std::move(previous)) {
}

RepoFile::~RepoFile() = default;

StagedFile::StagedFile(const OdString& relativePath, FileChange fileChange)
    : path(relativePath), change(fileChange) {
}

}  // namespace common
