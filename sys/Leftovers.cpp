#include <sys/BeneathInternal.h>
#include <sys/CallsInternal.h>
#include <sys/EntriesInternal.h>
#include <sys/Folder.h>
#include <sys/TemporaryName.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <string_view>
#include <vector>

namespace sys {

namespace {

// All names before the first is removed, for what a listing gives after that is left to the system.
std::vector<std::string> temporaryNames(int folder) {
    std::vector<std::string> names;
    const Handle opened = openBeneath(folder, ".", O_RDONLY | O_DIRECTORY);
    if (opened.isOpen())
        visitEntries(opened.number(), [&](std::string_view name, unsigned char) {
            if (isTemporaryName(name))
                names.emplace_back(name);
        });
    return names;
}

/// That long ago.
std::chrono::nanoseconds before(std::chrono::seconds age) {
    return std::chrono::system_clock::now().time_since_epoch() - age;
}

}  // namespace

std::error_code Folder::refresh(const std::string& relative, std::chrono::seconds age) const {
    const Outcome<FileStatus> old = status(relative);
    if (!old)
        return old.error();
    if (old->modifiedNs > before(age).count())
        return {};
    const Handle file = openBeneath(number(), relative, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    constexpr timespec now = {.tv_sec = 0, .tv_nsec = UTIME_NOW};
    if (!file.isOpen() || calls::setModified(file.number(), now) < 0)
        return calls::lastError();
    return {};
}

void Folder::removeLeftovers(const std::string& relative, std::chrono::seconds age) const {
    const Outcome<Folder> folder = openFolder(relative);
    if (!folder)
        return;
    const std::chrono::nanoseconds latest = before(age);
    for (const std::string& name : temporaryNames(folder->number())) {
        const Outcome<FileStatus> status = folder->status(name);
        if (status && status->modifiedNs <= latest.count())
            static_cast<void>(calls::removeFile(folder->number(), name));
    }
}

}  // namespace sys
