#include <platform/ut/Dir.h>
#include <platform/ut/SystemPathInternal.h>
#include <platform/ut/WildcardInternal.h>
#include <sys/CallsInternal.h>
#include <sys/EntriesInternal.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace ut {

namespace calls = sys::calls;

namespace {

/// The type of an entry, behind a link and where the folder itself does not say it. An entry that
/// vanished meanwhile has none, as a broken link.
unsigned char typeOf(int folder, const char* name, unsigned char type) {
    if (type != DT_UNKNOWN && type != DT_LNK)
        return type;
    struct stat status = {};
    if (type == DT_UNKNOWN && calls::statusAt(folder, name, status) == 0)
        type = static_cast<unsigned char>(IFTODT(status.st_mode));
    if (type != DT_LNK)
        return type;
    const bool isFile =
        calls::statusBehindLinks(folder, name, status) == 0 && S_ISREG(status.st_mode);
    return isFile ? DT_REG : DT_LNK;
}

bool isAsciiOnly(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

}  // namespace

Dir::Dir(const OdString& path) : path_(path) {
    const std::optional<std::string> systemPath = toSystemPath(path);
    if (!systemPath)
        return;
    const sys::Handle folder = calls::openAt(AT_FDCWD, systemPath->c_str(), O_RDONLY | O_DIRECTORY);
    if (!folder.isOpen() || !readEntries(folder.number()))
        return;
    isOpened_ = true;
    isAscii_ = isAsciiOnly(names_);
    sort(files_);
    sort(folders_);
}

bool Dir::exists(const OdString& path) {
    const std::optional<std::string> systemPath = toSystemPath(path);
    return systemPath && isFolder(*systemPath);
}

bool Dir::create(const OdString& path) {
    const std::optional<std::string> systemPath = toSystemPath(path);
    return systemPath && calls::makeFolder(AT_FDCWD, *systemPath) == 0;
}

std::vector<OdString> Dir::list(const OdString& pattern, std::uint32_t attributes) const {
    if (!isOpened_)
        return {};
    std::vector<OdString> files;
    std::vector<OdString> folders;
    if ((attributes & kFiles) != 0)
        files = matching(files_, pattern);
    if ((attributes & kFolders) != 0)
        folders = matching(folders_, pattern);
    if (folders.empty() || files.empty())
        return folders.empty() ? std::move(files) : std::move(folders);
    std::vector<OdString> both;
    both.reserve(files.size() + folders.size());
    std::merge(std::make_move_iterator(files.begin()), std::make_move_iterator(files.end()),
               std::make_move_iterator(folders.begin()), std::make_move_iterator(folders.end()),
               std::back_inserter(both));
    return both;
}

bool Dir::readEntries(int folder) {
    return sys::visitEntries(folder, [&](std::string_view name, unsigned char type) {
        type = typeOf(folder, name.data(), type);
        if (type != DT_REG && type != DT_DIR)
            return;
        (type == DT_REG ? files_ : folders_).push_back({names_.size(), name.size()});
        names_ += name;
    });
}

void Dir::sort(std::vector<Entry>& entries) const {
    if (isAscii_) {
        std::sort(entries.begin(), entries.end(), [this](const Entry& left, const Entry& right) {
            return bytesOf(left) < bytesOf(right);
        });
        return;
    }
    // The order of UTF-8 bytes is not that of UTF-16 units, and bytes that are no UTF-8 have their
    // own.
    std::vector<std::pair<OdString, Entry>> named;
    named.reserve(entries.size());
    for (const Entry& entry : entries)
        named.emplace_back(OdString::fromNarrow(bytesOf(entry)), entry);
    std::sort(named.begin(), named.end(),
              [](const auto& left, const auto& right) { return left.first < right.first; });
    std::transform(named.begin(), named.end(), entries.begin(),
                   [](const auto& pair) { return pair.second; });
}

std::string_view Dir::bytesOf(const Entry& entry) const {
    return std::string_view(names_).substr(entry.begin, entry.length);
}

std::vector<OdString> Dir::matching(const std::vector<Entry>& entries,
                                    const OdString& pattern) const {
    std::vector<OdString> names;
    names.reserve(entries.size());
    for (const Entry& entry : entries) {
        OdString name = OdString::fromNarrow(bytesOf(entry));
        if (pattern.isEmpty() || matchesWildcards(name, pattern))
            names.push_back(std::move(name));
    }
    return names;
}

}  // namespace ut
