#pragma once

namespace qrv_test {

/// Makes one memory allocation of the process throw `std::bad_alloc`: the `nth` while the object
/// lives. One object at a time, on one thread.
class [[nodiscard]] FailingAllocation {
public:
    explicit FailingAllocation(long nth);
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    ~FailingAllocation();

    bool hasFired() const;
};

}  // namespace qrv_test
