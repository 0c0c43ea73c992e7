#include <sys/User.h>

#include <pwd.h>
#include <unistd.h>

#include <cstddef>
#include <vector>

namespace sys {

std::uint32_t effectiveUser() {
    return ::geteuid();
}

std::string userName(std::uint32_t user) {
    constexpr std::size_t longestEntry = 16384;
    std::vector<char> texts(longestEntry);
    passwd entry = {};
    passwd* found = nullptr;
    if (::getpwuid_r(user, &entry, texts.data(), texts.size(), &found) != 0 || found == nullptr)
        return std::to_string(user);
    return found->pw_name;
}

}  // namespace sys
