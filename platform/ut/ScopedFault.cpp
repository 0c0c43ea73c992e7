#include <platform/ut/FaultInternal.h>
#include <platform/ut/ScopedFault.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>

namespace ut {

namespace {

struct Fault {
    bool isArmed = false;
    bool hasFired = false;
    int nth = 0;
    int errorNumber = 0;
    int callCount = 0;
};

constinit Fault fault;

}  // namespace

bool faultFires() {
    if (!fault.isArmed || ++fault.callCount != fault.nth)
        return false;
    fault.hasFired = true;
    // The signal that nothing can catch: no destructor and no exit handler tidies up behind it.
    if (fault.errorNumber == ScopedFault::kKillProcess)
        static_cast<void>(std::raise(SIGKILL));
    errno = fault.errorNumber;
    return true;
}

ScopedFault::ScopedFault(int nth, int errorNumber) {
    if (fault.isArmed)
        throw std::logic_error("a ScopedFault is alive already");
    fault = {.isArmed = true, .nth = nth, .errorNumber = errorNumber};
}

ScopedFault::~ScopedFault() {
    fault = {};
}

int ScopedFault::callCount() const {
    return fault.callCount;
}

bool ScopedFault::hasFired() const {
    return fault.hasFired;
}

}  // namespace ut
