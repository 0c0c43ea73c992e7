#pragma once

#include <sys/Handle.h>

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

/// The file-system calls of this process, all of ours. Each asks the living `ScopedFault` first and
/// is repeated when a signal interrupted it. They answer as the system's own: a negative number, or
/// a handle that is not open, on failure, with the cause in `errno`. A name is one name in the open
/// folder `folder`; what is called a path may lead anywhere from there, and AT_FDCWD stands for the
/// current folder.
namespace sys::calls {

/// The last failure.
std::error_code lastError();

/// What is opened is closed on exec.
Handle openAt(int folder, const char* path, int flags, mode_t mode = 0);
/// Lets the system check that the path stays below the folder and leads through no link.
Handle openBeneath(int folder, const char* path, int flags, mode_t mode);
/// Whether the system has that call, and lets this process use it.
bool hasOpenBeneath();

ssize_t read(int file, void* buffer, std::size_t size);
/// Leaves the file's position as it is.
ssize_t readAt(int file, void* buffer, std::size_t size, std::int64_t position);
ssize_t write(int file, const void* bytes, std::size_t size);
/// Fills the buffer with entries of a folder as `dirent64`, one behind the other, and gives the
/// bytes used; 0 behind the last entry.
ssize_t readEntries(int folder, void* buffer, std::size_t size);
int flush(int file);
int flushFileSystem(int file);
int truncate(int file, std::int64_t sizeBytes);
/// The descriptor is gone also when this fails.
int close(int file);
int shareBlocks(int target, int source);
int lock(int file);
/// Whether another process has the file open for writing; a file that is open only for reading
/// here. What cannot be told is "no", with the cause in `errno`.
bool isOpenForWriting(int file);
/// Whether somebody else holds a lock on any part of it, likewise.
bool isLocked(int file);

int status(int file, struct stat& status);
/// Of a link itself.
int statusAt(int folder, const std::string& name, struct stat& status);
/// Of what a link leads to.
int statusBehindLinks(int folder, const char* path, struct stat& status);
/// Whether this process has the rights (W_OK and the like), with those that it has now.
int checkRights(int folder, const std::string& path, int rights);
int setOwner(int file, uid_t owner, gid_t group);
int setPermissions(int file, mode_t permissions);
int setModified(int file, const timespec& time);

int makeFolder(int folder, const std::string& path, mode_t mode = 0777);
/// Nothing when the system cannot tell.
std::optional<std::string> currentFolder();
int rename(int fromFolder, const std::string& from, int toFolder, const std::string& to);
/// Fails with EEXIST when `to` is taken.
int renameToFree(int folder, const std::string& from, const std::string& to);
/// Fails with ENOTSUP where the system or the file system does not know how.
int exchange(int folder, const std::string& one, const std::string& other);
int removeFile(int folder, const std::string& name);
int removeFolder(int folder, const std::string& name);

}  // namespace sys::calls
