#include <platform/ut/ScopedFault.h>
#include <sys/ScopedFault.h>

namespace ut {

static_assert(ScopedFault::kKillProcess == sys::ScopedFault::killProcess);

ScopedFault::ScopedFault(int nth, int errorNumber)
    : fault_(std::make_unique<sys::ScopedFault>(nth, errorNumber)) {
}

ScopedFault::~ScopedFault() = default;

int ScopedFault::callCount() const {
    return fault_->callCount();
}

bool ScopedFault::hasFired() const {
    return fault_->hasFired();
}

}  // namespace ut
