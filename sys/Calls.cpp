#include <sys/CallsInternal.h>
#include <sys/FaultInternal.h>

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <linux/openat2.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace sys::calls {

namespace {

template <class Call>
auto repeatedWhenInterrupted(Call call) {
    for (;;) {
        const decltype(call()) result = faultFires() ? -1 : call();
        if (result >= 0 || errno != EINTR)
            return result;
    }
}

long openBeneathOnce(int folder, const char* path, int flags, mode_t mode) {
    open_how how = {};
    how.flags = static_cast<unsigned>(flags | O_CLOEXEC);
    // The call refuses permissions for what it does not make.
    how.mode = (flags & O_CREAT) != 0 ? mode : 0;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    return ::syscall(SYS_openat2, folder, path, &how, sizeof how);
}

// On a network share a lease is refused in the same words when the server has not entrusted the
// file to this machine, which says nothing of other programs.
bool isOnNetworkShare(int file) {
    struct statfs system = {};
    if (repeatedWhenInterrupted([&] { return ::fstatfs(file, &system); }) < 0)
        return true;
    const auto kind = static_cast<std::uint32_t>(system.f_type);
    return kind == NFS_SUPER_MAGIC || kind == CIFS_SUPER_MAGIC || kind == SMB_SUPER_MAGIC ||
           kind == SMB2_SUPER_MAGIC;
}

// An older kernel lacks the call, and a container's filter answers "not permitted" to all that it
// does not know.
bool tryOpenBeneath() {
    const long result = openBeneathOnce(AT_FDCWD, ".", O_PATH, 0);
    const bool isThere = result >= 0 || (errno != ENOSYS && errno != EPERM);
    // Past the count of calls: a test may begin to count before anybody asked this.
    if (result >= 0)
        ::close(static_cast<int>(result));
    return isThere;
}

}  // namespace

std::error_code lastError() {
    return {errno, std::generic_category()};
}

Handle openAt(int folder, const char* path, int flags, mode_t mode) {
    return Handle(
        repeatedWhenInterrupted([&] { return ::openat(folder, path, flags | O_CLOEXEC, mode); }));
}

Handle openBeneath(int folder, const char* path, int flags, mode_t mode) {
    return Handle(static_cast<int>(
        repeatedWhenInterrupted([&] { return openBeneathOnce(folder, path, flags, mode); })));
}

bool hasOpenBeneath() {
    static const bool isThere = tryOpenBeneath();
    return isThere;
}

ssize_t read(int file, void* buffer, std::size_t size) {
    return repeatedWhenInterrupted([&] { return ::read(file, buffer, size); });
}

ssize_t readAt(int file, void* buffer, std::size_t size, std::int64_t position) {
    return repeatedWhenInterrupted([&] { return ::pread(file, buffer, size, position); });
}

ssize_t write(int file, const void* bytes, std::size_t size) {
    return repeatedWhenInterrupted([&] { return ::write(file, bytes, size); });
}

ssize_t readEntries(int folder, void* buffer, std::size_t size) {
    return repeatedWhenInterrupted([&] { return ::getdents64(folder, buffer, size); });
}

int flush(int file) {
    return repeatedWhenInterrupted([&] { return ::fsync(file); });
}

int truncate(int file, std::int64_t sizeBytes) {
    return repeatedWhenInterrupted([&] { return ::ftruncate(file, sizeBytes); });
}

int flushFileSystem(int file) {
    return repeatedWhenInterrupted([&] { return ::syncfs(file); });
}

int close(int file) {
    // Not repeated: Linux frees the descriptor whatever close answers, and its number may already
    // belong to another thread's file. For the same reason a call that is made to fail closes all
    // the same.
    const bool fails = faultFires();
    const int errorNumber = errno;
    const int result = ::close(file);
    if (fails)
        errno = errorNumber;
    return (fails || result < 0) && errno != EINTR ? -1 : 0;
}

int shareBlocks(int target, int source) {
    return repeatedWhenInterrupted([&] { return ::ioctl(target, FICLONE, source); });
}

int lock(int file) {
    return repeatedWhenInterrupted([&] { return ::flock(file, LOCK_EX | LOCK_NB); });
}

bool isOpenForWriting(int file) {
    if (isOnNetworkShare(file))
        return false;
    // The system grants a lease for reading only while nobody has the file open for writing. Who
    // opens it meanwhile waits for a moment, and this process is told by a signal: by one that
    // nobody minds.
    repeatedWhenInterrupted([&] { return ::fcntl(file, F_SETSIG, SIGURG); });
    if (repeatedWhenInterrupted([&] { return ::fcntl(file, F_SETLEASE, F_RDLCK); }) < 0)
        return errno == EAGAIN;
    repeatedWhenInterrupted([&] { return ::fcntl(file, F_SETLEASE, F_UNLCK); });
    return false;
}

bool isLocked(int file) {
    // Asked for as if the whole file was to be written, which no other lock allows.
    struct flock asked = {
        .l_type = F_WRLCK, .l_whence = SEEK_SET, .l_start = 0, .l_len = 0, .l_pid = 0};
    const bool isAnswered =
        repeatedWhenInterrupted([&] { return ::fcntl(file, F_GETLK, &asked); }) == 0;
    if (isAnswered && asked.l_type != F_UNLCK)
        return true;
    // The other kind of lock cannot be asked for without taking it.
    if (lock(file) < 0)
        return errno == EWOULDBLOCK;
    repeatedWhenInterrupted([&] { return ::flock(file, LOCK_UN); });
    return false;
}

int status(int file, struct stat& status) {
    return repeatedWhenInterrupted([&] { return ::fstat(file, &status); });
}

int statusAt(int folder, const std::string& name, struct stat& status) {
    return repeatedWhenInterrupted(
        [&] { return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW); });
}

int statusBehindLinks(int folder, const char* path, struct stat& status) {
    return repeatedWhenInterrupted([&] { return ::fstatat(folder, path, &status, 0); });
}

int checkRights(int folder, const std::string& path, int rights) {
    return repeatedWhenInterrupted(
        [&] { return ::faccessat(folder, path.c_str(), rights, AT_EACCESS); });
}

int setOwner(int file, uid_t owner, gid_t group) {
    return repeatedWhenInterrupted([&] { return ::fchown(file, owner, group); });
}

int setPermissions(int file, mode_t permissions) {
    return repeatedWhenInterrupted([&] { return ::fchmod(file, permissions); });
}

int setModified(int file, const timespec& time) {
    const std::array<timespec, 2> times = {timespec{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, time};
    return repeatedWhenInterrupted([&] { return ::futimens(file, times.data()); });
}

int makeFolder(int folder, const std::string& path, mode_t mode) {
    return repeatedWhenInterrupted([&] { return ::mkdirat(folder, path.c_str(), mode); });
}

std::optional<std::string> currentFolder() {
    const auto free = [](char* text) { std::free(text); };
    const std::unique_ptr<char, decltype(free)> path(faultFires() ? nullptr : ::getcwd(nullptr, 0));
    return path == nullptr ? std::nullopt : std::optional<std::string>(path.get());
}

int rename(int fromFolder, const std::string& from, int toFolder, const std::string& to) {
    return repeatedWhenInterrupted(
        [&] { return ::renameat(fromFolder, from.c_str(), toFolder, to.c_str()); });
}

int renameToFree(int folder, const std::string& from, const std::string& to) {
    const int result = repeatedWhenInterrupted(
        [&] { return ::renameat2(folder, from.c_str(), folder, to.c_str(), RENAME_NOREPLACE); });
    // Not every file system knows the flag. A second name is as good, for none is replaced by it.
    if (result == 0 || (errno != EINVAL && errno != ENOSYS))
        return result;
    const int linked = repeatedWhenInterrupted(
        [&] { return ::linkat(folder, from.c_str(), folder, to.c_str(), 0); });
    if (linked == 0)
        return removeFile(folder, from);
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS)
        return linked;
    // Some know neither. Then a last look has to do.
    struct stat taken = {};
    if (statusAt(folder, to, taken) == 0)
        errno = EEXIST;
    return errno == ENOENT ? rename(folder, from, folder, to) : -1;
}

int exchange(int folder, const std::string& one, const std::string& other) {
    const int result = repeatedWhenInterrupted(
        [&] { return ::renameat2(folder, one.c_str(), folder, other.c_str(), RENAME_EXCHANGE); });
    // A container's filter may answer "not permitted" to a call that it does not know.
    if (result < 0 && (errno == EINVAL || errno == ENOSYS || errno == EPERM))
        errno = ENOTSUP;
    return result;
}

int removeFile(int folder, const std::string& name) {
    return repeatedWhenInterrupted([&] { return ::unlinkat(folder, name.c_str(), 0); });
}

int removeFolder(int folder, const std::string& name) {
    return repeatedWhenInterrupted([&] { return ::unlinkat(folder, name.c_str(), AT_REMOVEDIR); });
}

}  // namespace sys::calls
