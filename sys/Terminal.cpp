#include <sys/Terminal.h>

#include <pwd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <vector>

namespace sys {

namespace {

constexpr int usualWidth = 80;
constexpr const char* unknown = "unknown";

int descriptorOf(Stream stream) {
    return stream == Stream::output ? STDOUT_FILENO : STDERR_FILENO;
}

}  // namespace

bool isTerminal(Stream stream) {
    return ::isatty(descriptorOf(stream)) == 1;
}

int terminalWidth(Stream stream) {
    winsize size = {};
    const bool isKnown = ::ioctl(descriptorOf(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : usualWidth;
}

std::string userName() {
    constexpr std::size_t longestEntry = 16384;
    std::vector<char> texts(longestEntry);
    passwd entry = {};
    passwd* found = nullptr;
    if (::getpwuid_r(::geteuid(), &entry, texts.data(), texts.size(), &found) != 0 ||
        found == nullptr)
        return unknown;
    return found->pw_name;
}

std::string hostName() {
    std::array<char, 257> name = {};
    // The last byte stays NUL, also for a name that is cut off.
    if (::gethostname(name.data(), name.size() - 1) != 0 || name.front() == '\0')
        return unknown;
    return name.data();
}

}  // namespace sys
