#include <sys/StatusInternal.h>

#include <algorithm>
#include <limits>

namespace sys {

namespace {

constexpr std::int64_t nsPerSecond = 1000000000;
constexpr std::int64_t lastSecond = std::numeric_limits<std::int64_t>::max() / nsPerSecond - 1;

std::int64_t nanoseconds(const timespec& time) {
    const std::int64_t seconds = std::clamp<std::int64_t>(time.tv_sec, -lastSecond, lastSecond);
    return seconds * nsPerSecond + time.tv_nsec;
}

}  // namespace

std::int64_t modifiedNs(const struct stat& status) {
    return nanoseconds(status.st_mtim);
}

std::int64_t changedNs(const struct stat& status) {
    return nanoseconds(status.st_ctim);
}

FileStamp stampOf(const struct stat& status) {
    return {.number = status.st_ino,
            .sizeBytes = status.st_size,
            .modifiedNs = modifiedNs(status),
            .changedNs = changedNs(status)};
}

std::uint32_t permissionsOf(const struct stat& status) {
    constexpr mode_t permissionBits = 0777;
    return status.st_mode & permissionBits;
}

}  // namespace sys
