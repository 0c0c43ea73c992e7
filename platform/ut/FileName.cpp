#include <platform/ut/FileName.h>
#include <platform/ut/SystemPathInternal.h>
#include <sys/CallsInternal.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string>

namespace ut {

namespace calls = sys::calls;

namespace {

constexpr wchar_t slash = L'/';
constexpr const wchar_t* currentFolder = L".";

/// A component of a path, without separators.
struct Component {
    int begin = 0;
    int end = 0;
};

/// The last component that ends at or before `limit`; empty when there is none.
Component lastComponent(const OdString& path, int limit) {
    int end = limit;
    while (end > 0 && path[end - 1] == slash)
        --end;
    int begin = end;
    while (begin > 0 && path[begin - 1] != slash)
        --begin;
    return {.begin = begin, .end = end};
}

/// An absolute path without what names nothing: ".", and separators beside others.
OdString tidied(const OdString& path) {
    OdString tidy;
    for (int begin = 0; begin < path.getLength();) {
        const int separator = path.find(slash, begin);
        const int end = separator < 0 ? path.getLength() : separator;
        const OdString name = path.mid(begin, end - begin);
        if (!name.isEmpty() && name != OdString(L".")) {
            tidy += slash;
            tidy += name;
        }
        begin = end + 1;
    }
    return tidy.isEmpty() ? OdString(std::wstring(1, slash)) : tidy;
}

// Whether it is there counts, not who made it: another process may be making the same folders.
bool makeFolder(const std::string& path, mode_t mode) {
    return calls::makeFolder(AT_FDCWD, path, mode) == 0 || isFolder(path);
}

bool makeParents(const std::string& path, mode_t mode) {
    const std::size_t nameEnd = path.find_last_not_of('/');
    for (std::size_t end = path.find('/', 1); end < nameEnd; end = path.find('/', end + 1)) {
        if (path[end - 1] != '/' && !makeFolder(path.substr(0, end), mode))
            return false;
    }
    return true;
}

/// Whether a look that failed for this reason says that nothing is there, or could be.
bool meansAbsent(int errorNumber) {
    return errorNumber == ENOENT || errorNumber == ENOTDIR || errorNumber == ENAMETOOLONG;
}

DateTime toDateTime(const timespec& time) {
    return DateTime::fromUnixTime(time.tv_sec, time.tv_nsec);
}

}  // namespace

FileName::FileName(const OdString& path) : path_(path) {
}

FileName::FileName(const OdString& folder, const OdString& baseName, const OdString& extension)
    : path_(folder) {
    if (!folder.isEmpty() && !isPathSeparator(folder[folder.getLength() - 1]))
        path_ += slash;
    path_ += baseName;
    if (extension.isEmpty())
        return;
    path_ += L'.';
    path_ += extension;
}

wchar_t FileName::getPathSeparator() {
    return slash;
}

bool FileName::isPathSeparator(wchar_t unit) {
    return unit == slash;
}

bool FileName::mkdir(const OdString& path, int mode, bool withParents) {
    const std::optional<std::string> systemPath = toSystemPath(path);
    if (!systemPath)
        return false;
    const auto bits = static_cast<mode_t>(mode);
    if (makeFolder(*systemPath, bits))
        return true;
    return withParents && makeParents(*systemPath, bits) && makeFolder(*systemPath, bits);
}

void FileName::makeAbsolute() {
    if (path_.isEmpty())
        return;
    OdString absolute = path_;
    if (!isPathSeparator(path_[0])) {
        const std::optional<std::string> current = calls::currentFolder();
        if (!current)
            return;
        absolute = OdString(current->c_str()) + slash + path_;
    }
    path_ = tidied(absolute);
}

bool FileName::exists(int kinds) const {
    if (kinds == 0)
        return false;
    const std::optional<std::string> systemPath = toSystemPath(path_);
    struct stat status = {};
    return systemPath && (calls::statusBehindLinks(AT_FDCWD, systemPath->c_str(), status) == 0 ||
                          !meansAbsent(errno));
}

int FileName::getDirCount() const {
    int count = 0;
    Component first;
    Component component = lastComponent(path_, path_.getLength());
    for (; component.end > 0; component = lastComponent(path_, component.begin)) {
        ++count;
        first = component;
    }
    const bool namesItsBegin = first.begin == 0 && path_.left(first.end) == currentFolder;
    return path_.isEmpty() || namesItsBegin ? count : count + 1;
}

void FileName::removeLastDir() {
    const Component last = lastComponent(path_, path_.getLength());
    const Component before = lastComponent(path_, last.begin);
    if (before.end > 0)
        path_ = path_.left(before.end);
    else if (last.end > 0 && last.begin > 0)
        path_ = path_.left(1);
    else if (last.end > 0 && path_.left(last.end) != currentFolder)
        path_ = currentFolder;
    else
        path_ = OdString();
}

bool FileName::isDirWritable() const {
    const std::optional<std::string> systemPath = toSystemPath(path_);
    return systemPath && isFolder(*systemPath) &&
           calls::checkRights(AT_FDCWD, *systemPath, W_OK | X_OK) == 0;
}

OdString FileName::getExt() const {
    const Component last = lastComponent(path_, path_.getLength());
    const OdString name = path_.mid(last.begin, last.end - last.begin);
    const int dot = name.reverseFind(L'.');
    return dot > 0 ? name.mid(dot + 1) : OdString();
}

bool FileName::getTimes(DateTime* access, DateTime* modification, DateTime* creation) const {
    const std::optional<std::string> systemPath = toSystemPath(path_);
    struct stat status = {};
    if (!systemPath || calls::statusBehindLinks(AT_FDCWD, systemPath->c_str(), status) < 0)
        return false;
    if (access != nullptr)
        *access = toDateTime(status.st_atim);
    if (modification != nullptr)
        *modification = toDateTime(status.st_mtim);
    if (creation != nullptr)
        *creation = toDateTime(status.st_ctim);
    return true;
}

}  // namespace ut
