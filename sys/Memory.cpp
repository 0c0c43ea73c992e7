#include <sys/Memory.h>

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <string>

namespace sys {

namespace {

constexpr int stepBytes = 32 << 20;

// Nothing but a test sets it.
std::optional<std::int64_t> answerForTest;

/// The number that stands in the file alone; nothing for "max" and for a file that is missing.
std::optional<std::int64_t> numberIn(const char* path) {
    std::ifstream file(path);
    std::int64_t number = 0;
    return file >> number ? std::optional(number) : std::nullopt;
}

/// Also what the system would take back from its caches.
std::optional<std::int64_t> ofMachine() {
    std::ifstream file("/proc/meminfo");
    std::string word;
    while (file >> word) {
        std::int64_t kibibytes = 0;
        if (word == "MemAvailable:" && file >> kibibytes)
            return kibibytes * 1024;
    }
    return std::nullopt;
}

/// Of the group of processes whose files are seen here, which is that of a container in it.
std::optional<std::int64_t> ofContainer() {
    const std::optional<std::int64_t> most = numberIn("/sys/fs/cgroup/memory.max");
    const std::optional<std::int64_t> used = numberIn("/sys/fs/cgroup/memory.current");
    return most && used ? std::optional(*most - *used) : std::nullopt;
}

std::optional<std::int64_t> ofProcess() {
    rlimit limit = {};
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return std::nullopt;
    const std::optional<std::int64_t> pages = numberIn("/proc/self/statm");
    return static_cast<std::int64_t>(limit.rlim_cur) - pages.value_or(0) * ::sysconf(_SC_PAGESIZE);
}

}  // namespace

void takeMemoryInLargeSteps() {
    // A library that does not know the parameter goes on as it did. No other thread runs yet.
    static_cast<void>(::mallopt(M_TOP_PAD, stepBytes));  // NOLINT(concurrency-mt-unsafe)
}

std::optional<std::int64_t> memoryAtHand() {
    if (answerForTest)
        return answerForTest;
    constexpr std::int64_t unlimited = std::numeric_limits<std::int64_t>::max();
    std::int64_t least = unlimited;
    for (const std::optional<std::int64_t>& bytes : {ofMachine(), ofContainer(), ofProcess()})
        least = std::min(least, std::max<std::int64_t>(bytes.value_or(unlimited), 0));
    return least == unlimited ? std::nullopt : std::optional(least);
}

ScopedMemoryAtHand::ScopedMemoryAtHand(std::int64_t bytes) {
    answerForTest = bytes;
}

ScopedMemoryAtHand::~ScopedMemoryAtHand() {
    answerForTest.reset();
}

}  // namespace sys
