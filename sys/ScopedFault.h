#pragma once

namespace sys {

/// Makes one system call of this library fail, for tests. Calls are counted from 1 on while the
/// object lives; the `nth` is not carried out and fails with `errorNumber` (of <cerrno>). One
/// object at a time, on one thread.
class [[nodiscard]] ScopedFault {
public:
    ScopedFault(int nth, int errorNumber);
    ScopedFault(const ScopedFault&) = delete;
    ScopedFault& operator=(const ScopedFault&) = delete;
    ~ScopedFault();

    /// True once the call failed: a loop over `nth` ends with the first run in which it did not.
    bool hasFired() const;
};

}  // namespace sys
