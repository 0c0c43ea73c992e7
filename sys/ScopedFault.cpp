#include <sys/FaultInternal.h>
#include <sys/ScopedFault.h>

#include <cerrno>
#include <stdexcept>

namespace sys {

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

bool ScopedFault::hasFired() const {
    return fault.hasFired;
}

}  // namespace sys
