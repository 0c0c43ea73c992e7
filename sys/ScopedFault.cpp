#include <sys/FaultInternal.h>
#include <sys/ScopedFault.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <stdexcept>

namespace sys {

namespace {

struct Fault {
    int nth = 0;
    int errorNumber = 0;
    std::atomic<int> callCount = 0;
    std::atomic<bool> hasFired = false;
};

constinit Fault fault;
// What the fault is stands before it is armed: calls come from any thread.
constinit std::atomic<bool> isArmed = false;

}  // namespace

bool faultFires() {
    if (!isArmed || ++fault.callCount != fault.nth)
        return false;
    fault.hasFired = true;
    // The signal that nothing can catch: no destructor and no exit handler tidies up behind it.
    if (fault.errorNumber == ScopedFault::killProcess)
        static_cast<void>(std::raise(SIGKILL));
    errno = fault.errorNumber;
    return true;
}

ScopedFault::ScopedFault(int nth, int errorNumber) {
    if (isArmed)
        throw std::logic_error("a ScopedFault is alive already");
    fault.nth = nth;
    fault.errorNumber = errorNumber;
    fault.callCount = 0;
    fault.hasFired = false;
    isArmed = true;
}

ScopedFault::~ScopedFault() {
    isArmed = false;
}

int ScopedFault::callCount() const {
    return fault.callCount;
}

bool ScopedFault::hasFired() const {
    return fault.hasFired;
}

}  // namespace sys
