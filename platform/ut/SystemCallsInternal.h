#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <string>

/// The file-system calls of this library, all of them. Each asks the living `ScopedFault` first and
/// is repeated when a signal interrupted it. They answer as the system's own: a negative number on
/// failure, with the cause in `errno`. A relative name starts at the open folder `folder`, or at
/// the current folder with `AT_FDCWD`.
namespace ut::calls {

/// The descriptor is closed on exec.
int openAt(int folder, const std::string& name, int flags, mode_t mode = 0);
ssize_t read(int descriptor, void* buffer, std::size_t size);
ssize_t write(int descriptor, const void* bytes, std::size_t size);
int fsync(int descriptor);
/// The descriptor is gone also when this fails.
int close(int descriptor);

int fstat(int descriptor, struct stat& status);
int fstatAt(int folder, const char* name, struct stat& status, int flags);
int fchmod(int descriptor, mode_t mode);
/// An owner or group of -1 stays as it is.
int fchown(int descriptor, uid_t owner, gid_t group);
int accessAt(int folder, const std::string& name, int rights, int flags);

int mkdir(const std::string& path, mode_t mode);
int renameAt(int folder, const std::string& from, const std::string& to);
int unlinkAt(int folder, const std::string& name);

/// Fills `buffer` with entries as `dirent64`, one behind the other, and gives the bytes used; 0
/// behind the last entry.
ssize_t getEntries(int folder, void* buffer, std::size_t size);

struct FreeText {
    void operator()(char* text) const;
};
/// The current folder, or null.
std::unique_ptr<char, FreeText> currentFolder();

}  // namespace ut::calls
