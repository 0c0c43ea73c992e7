#include <platform/ut/SystemPathInternal.h>
#include <sys/CallsInternal.h>

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>

#include <cerrno>

namespace ut {

std::optional<std::string> toSystemPath(const OdString& path) {
    std::string bytes = path.toNarrow();
    if (bytes.find('\0') != std::string::npos) {
        errno = ENOENT;
        return std::nullopt;
    }
    // The system's own limit, kept here as well: a write starts from the open folder, where a path
    // one name too long would still succeed and give a file that no other operation reaches.
    if (bytes.size() >= PATH_MAX) {
        errno = ENAMETOOLONG;
        return std::nullopt;
    }
    return bytes;
}

bool isFolder(const std::string& systemPath) {
    struct stat status = {};
    return sys::calls::statusBehindLinks(AT_FDCWD, systemPath.c_str(), status) == 0 &&
           S_ISDIR(status.st_mode);
}

}  // namespace ut
