#pragma once

namespace qrv_test {

/// Makes one memory allocation of the process throw `std::bad_alloc`: the `nth` while the object
/// lives; or that one and all that follow. One object at a time, on one thread.
class [[nodiscard]] FailingAllocation {
public:
    enum class Which { one, allThatFollow };

    explicit FailingAllocation(long nth, Which which = Which::one);
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    ~FailingAllocation();

    bool hasFired() const;
};

}  // namespace qrv_test
