#pragma once

#include <sys/FileStamp.h>
#include <sys/InputFile.h>
#include <sys/NewFile.h>
#include <sys/Outcome.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

namespace sys {

enum class FileKind { regular, folder, link, other };

/// What the system says of a name, of a link itself and not of what it points to.
struct FileStatus {
    FileKind kind = FileKind::other;
    /// Of the file within its file system.
    std::uint64_t number = 0;
    std::int64_t sizeBytes = 0;
    /// Nanoseconds since 1970-01-01T00:00:00Z.
    std::int64_t modifiedNs = 0;
    /// The same for the last change of contents, name or permissions, which nobody can set back.
    std::int64_t changedNs = 0;
    std::uint32_t permissions = 0;
    /// The number of the user whose file it is.
    std::uint32_t owner = 0;
    /// Of the group likewise.
    std::uint32_t group = 0;
};

struct NameInFolder;

/// An open folder, and what lies below it. Every operation takes a path relative to it and never
/// leaves it: nothing is cached, and a path that leads through a symbolic link is refused by the
/// system itself at the moment of use, so that nothing can be exchanged between a check and the
/// use. Paths are bytes; "." is the folder itself.
///
/// A path that leads through a link fails with `too_many_symbolic_link_levels`, an absolute one and
/// one with "..", "." or an empty component with `invalid_argument`; one with a NUL names nothing.
class Folder {
public:
    /// Opens an existing folder; here links are followed.
    static Outcome<Folder> open(const std::string& path);
    /// Opens a folder below this one, without links.
    Outcome<Folder> openFolder(const std::string& relative) const;

    Outcome<FileStatus> status(const std::string& relative) const;
    Outcome<FileStamp> stamp(const std::string& relative) const;
    /// Opens a regular file for reading. Anything else is refused, without waiting for a pipe: a
    /// folder with `is_a_directory`, a link with `too_many_symbolic_link_levels`, the rest with
    /// `operation_not_supported`.
    Outcome<InputFile> openFile(const std::string& relative) const;
    /// Opens the folder that holds what is called `relative`, which need not be there, and gives
    /// that with the name in it: the two stay together whatever happens to the path.
    Outcome<NameInFolder> openFolderOf(const std::string& relative) const;
    /// Begins a new file, which will have the name `relative` once it is published (see NewFile).
    /// Makes the folders on the way that are missing. The process's mask applies to `permissions`.
    Outcome<NewFile> newFile(const std::string& relative, std::uint32_t permissions) const;
    /// Makes an empty file; the process's mask applies to `permissions`. `file_exists` when the
    /// name is taken.
    [[nodiscard]] std::error_code makeFile(const std::string& relative,
                                           std::uint32_t permissions) const;
    /// A path to a name in this very folder, for a library that opens by path: it leads through the
    /// open folder, wherever that was moved to. It lasts as long as a copy of this does, and not
    /// beyond the process. Needs /proc.
    std::string pathThroughHandle(const std::string& name) const;
    /// Removes a file or a link. A missing one is an error, `no_such_file_or_directory`.
    [[nodiscard]] std::error_code removeFile(const std::string& relative) const;
    /// Renames a file or folder within this folder, over an existing file. The folders of both
    /// names must exist.
    [[nodiscard]] std::error_code rename(const std::string& from, const std::string& to) const;
    /// Renames a file or folder of this very folder, and replaces nothing: `file_exists` when `to`
    /// is taken. Both are names, not paths.
    [[nodiscard]] std::error_code renameToFree(const std::string& from,
                                               const std::string& to) const;
    /// Fails when this process may not write to that file of this very folder, as far as the rights
    /// tell that it has now: `permission_denied`, or what kept the system from telling.
    [[nodiscard]] std::error_code checkWritable(const std::string& name) const;
    /// Two files or folders of this very folder change their names, in one step.
    /// `operation_not_supported` where the file system, or the system, cannot do that.
    [[nodiscard]] std::error_code exchange(const std::string& one, const std::string& other) const;
    /// The names in a folder, ordered. Fails when only some of them can be told.
    Outcome<std::vector<std::string>> list(const std::string& relative = ".") const;
    /// Removes the folders above `relative`, innermost first, as long as they are empty.
    void removeEmptyParents(const std::string& relative) const;
    /// Removes files of that folder which are named as a NewFile before it is published and were
    /// not written to for `age`. What cannot be removed stays, without a word.
    void removeLeftovers(const std::string& relative, std::chrono::seconds age) const;
    /// Sets the time of a file's last change to now when it is older than `age`, so that it counts
    /// as new again.
    [[nodiscard]] std::error_code refresh(const std::string& relative,
                                          std::chrono::seconds age) const;
    /// Makes a folder and those above it; existing ones are no error.
    [[nodiscard]] std::error_code makeFolders(const std::string& relative) const;
    /// Flushes the entries of a folder to the disk. A file system that cannot do that has no better
    /// to offer, so it is no error.
    [[nodiscard]] std::error_code flush(const std::string& relative = ".") const;
    /// Flushes everything that was written to the file system that holds this folder: for many
    /// files at once much quicker than one after the other.
    [[nodiscard]] std::error_code flushFileSystem() const;

private:
    friend class Lock;

    explicit Folder(Handle handle) : handle_(std::make_shared<const Handle>(std::move(handle))) {}

    int number() const { return handle_->number(); }

    // Shared with the new files that are not published yet.
    std::shared_ptr<const Handle> handle_;
};

struct NameInFolder {
    Folder folder;
    std::string name;
};

}  // namespace sys
