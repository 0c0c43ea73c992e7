#include <platform/ut/FaultInternal.h>
#include <platform/ut/SystemCallsInternal.h>

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace ut::calls {

namespace {

template <class Call>
auto repeatedWhenInterrupted(Call call) {
    for (;;) {
        const decltype(call()) result = faultFires() ? -1 : call();
        if (result >= 0 || errno != EINTR)
            return result;
    }
}

}  // namespace

int openAt(int folder, const std::string& name, int flags, mode_t mode) {
    return repeatedWhenInterrupted(
        [&] { return ::openat(folder, name.c_str(), flags | O_CLOEXEC, mode); });
}

ssize_t read(int descriptor, void* buffer, std::size_t size) {
    return repeatedWhenInterrupted([&] { return ::read(descriptor, buffer, size); });
}

ssize_t write(int descriptor, const void* bytes, std::size_t size) {
    return repeatedWhenInterrupted([&] { return ::write(descriptor, bytes, size); });
}

int fsync(int descriptor) {
    return repeatedWhenInterrupted([&] { return ::fsync(descriptor); });
}

int close(int descriptor) {
    // Not repeated: Linux frees the descriptor whatever close answers, and its number may already
    // belong to another thread's file. For the same reason a call that is made to fail closes all
    // the same.
    const bool fails = faultFires();
    const int errorNumber = errno;
    const int result = ::close(descriptor);
    if (fails)
        errno = errorNumber;
    return (fails || result < 0) && errno != EINTR ? -1 : 0;
}

int fstat(int descriptor, struct stat& status) {
    return repeatedWhenInterrupted([&] { return ::fstat(descriptor, &status); });
}

int fstatAt(int folder, const char* name, struct stat& status, int flags) {
    return repeatedWhenInterrupted([&] { return ::fstatat(folder, name, &status, flags); });
}

int fchmod(int descriptor, mode_t mode) {
    return repeatedWhenInterrupted([&] { return ::fchmod(descriptor, mode); });
}

int fchown(int descriptor, uid_t owner, gid_t group) {
    return repeatedWhenInterrupted([&] { return ::fchown(descriptor, owner, group); });
}

int accessAt(int folder, const std::string& name, int rights, int flags) {
    return repeatedWhenInterrupted(
        [&] { return ::faccessat(folder, name.c_str(), rights, flags); });
}

int mkdir(const std::string& path, mode_t mode) {
    return repeatedWhenInterrupted([&] { return ::mkdir(path.c_str(), mode); });
}

int renameAt(int folder, const std::string& from, const std::string& to) {
    return repeatedWhenInterrupted(
        [&] { return ::renameat(folder, from.c_str(), folder, to.c_str()); });
}

int unlinkAt(int folder, const std::string& name) {
    return repeatedWhenInterrupted([&] { return ::unlinkat(folder, name.c_str(), 0); });
}

ssize_t getEntries(int folder, void* buffer, std::size_t size) {
    return repeatedWhenInterrupted([&] { return ::getdents64(folder, buffer, size); });
}

void FreeText::operator()(char* text) const {
    std::free(text);
}

std::unique_ptr<char, FreeText> currentFolder() {
    return std::unique_ptr<char, FreeText>(faultFires() ? nullptr : ::getcwd(nullptr, 0));
}

}  // namespace ut::calls
