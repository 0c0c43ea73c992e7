#pragma once

#include <platform/kernel/Export.h>

#include <memory>

namespace sys {
class ScopedFault;
}

namespace ut {

/// Makes one file-system call of this process fail, of those that go through this library, for
/// tests. Calls are counted from 1 on while the object lives; the `nth` is not carried out and
/// fails with `errorNumber` (of <cerrno>), or, with `kKillProcess`, ends the process on the spot as
/// a power cut would. One object at a time.
class QRV_PLATFORM_EXPORT [[nodiscard]] ScopedFault {
public:
    /// Instead of an error number: the process ends at the call.
    static constexpr int kKillProcess = -1;

    /// Begins to count. Throws `std::logic_error` while there is another one.
    ScopedFault(int nth, int errorNumber);
    ScopedFault(const ScopedFault&) = delete;
    ScopedFault& operator=(const ScopedFault&) = delete;
    /// Ends the counting; every call works again.
    ~ScopedFault();

    /// How many calls were counted so far, the failed one included.
    int callCount() const;
    /// True once the call failed: a loop over `nth` ends with the first run in which it did not.
    bool hasFired() const;

private:
    std::unique_ptr<sys::ScopedFault> fault_;
};

}  // namespace ut
