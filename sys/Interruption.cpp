#include <sys/Interruption.h>

#include <signal.h>

#include <array>
#include <atomic>
#include <cstddef>

namespace sys {

namespace {

constexpr std::array<int, 3> wishes = {SIGINT, SIGTERM, SIGHUP};

// A handler may touch nothing but this.
constinit std::atomic<int> noted = 0;
static_assert(std::atomic<int>::is_always_lock_free);

constinit std::array<struct sigaction, wishes.size()> before = {};

void note(int signal) {
    noted = signal;
}

}  // namespace

Interruption::Interruption() {
    struct sigaction action = {};
    action.sa_handler = note;
    // Libraries in the same process need not expect that their calls break off.
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (std::size_t index = 0; index < wishes.size(); ++index) {
        if (::sigaction(wishes[index], nullptr, &before[index]) == 0 &&
            before[index].sa_handler == SIG_IGN)
            continue;
        static_cast<void>(::sigaction(wishes[index], &action, nullptr));
    }
}

Interruption::~Interruption() {
    for (std::size_t index = 0; index < wishes.size(); ++index)
        static_cast<void>(::sigaction(wishes[index], &before[index], nullptr));
}

bool Interruption::isWanted() {
    return noted != 0;
}

void Interruption::carryOut() {
    if (noted != 0)
        static_cast<void>(::raise(noted));
}

}  // namespace sys
