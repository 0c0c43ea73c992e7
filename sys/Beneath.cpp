#include <sys/BeneathInternal.h>
#include <sys/CallsInternal.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string_view>

namespace sys {

namespace {

bool isRefusedName(std::string_view name) {
    return name.empty() || name == "." || name == "..";
}

// A folder that is a link is answered with "not a folder", where the system's own check says what
// is the matter.
int errorOfFolder(int folder, const std::string& name) {
    const int errorNumber = errno;
    struct stat status = {};
    const bool isLink = errorNumber == ENOTDIR && calls::statusAt(folder, name, status) == 0 &&
                        S_ISLNK(status.st_mode);
    return isLink ? ELOOP : errorNumber;
}

Handle openName(int folder, const std::string& name, int flags, mode_t mode) {
    Handle opened = calls::openAt(folder, name.c_str(), flags | O_NOFOLLOW, mode);
    if (!opened.isOpen())
        errno = errorOfFolder(folder, name);
    return opened;
}

}  // namespace

int refusalOfForm(const std::string& path) {
    if (path.empty() || path.find('\0') != std::string::npos)
        return ENOENT;
    if (path == ".")
        return 0;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (isRefusedName(std::string_view(path).substr(begin, end - begin)))
            return EINVAL;
        begin = end + 1;
    }
    return 0;
}

Handle openBeneath(int folder, const std::string& path, int flags, mode_t mode) {
    if (!calls::hasOpenBeneath())
        return openBeneathByWalking(folder, path, flags, mode);
    if (const int refusal = refusalOfForm(path); refusal != 0) {
        errno = refusal;
        return Handle();
    }
    return calls::openBeneath(folder, path.c_str(), flags, mode);
}

Handle openBeneathByWalking(int folder, const std::string& path, int flags, mode_t mode) {
    if (const int refusal = refusalOfForm(path); refusal != 0) {
        errno = refusal;
        return Handle();
    }
    Handle above;
    int current = folder;
    std::size_t begin = 0;
    for (std::size_t end = path.find('/'); end != std::string::npos; end = path.find('/', begin)) {
        above = openName(current, path.substr(begin, end - begin), O_PATH | O_DIRECTORY, 0);
        if (!above.isOpen())
            return Handle();
        current = above.number();
        begin = end + 1;
    }
    return openName(current, path.substr(begin), flags, mode);
}

std::pair<std::string, std::string> splitPath(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return {"", path};
    return {path.substr(0, slash), path.substr(slash + 1)};
}

Outcome<Place> placeOf(int folder, const std::string& path) {
    if (const int refusal = path == "." ? EINVAL : refusalOfForm(path); refusal != 0)
        return std::error_code(refusal, std::generic_category());
    auto [above, name] = splitPath(path);
    if (above.empty())
        return Place{.opened = Handle(), .folder = folder, .name = std::move(name)};
    Handle opened = openBeneath(folder, above, O_PATH | O_DIRECTORY);
    if (!opened.isOpen())
        return calls::lastError();
    const int number = opened.number();
    return Place{.opened = std::move(opened), .folder = number, .name = std::move(name)};
}

}  // namespace sys
