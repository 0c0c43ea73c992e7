#pragma once

#include <platform/sys/Handle.h>
#include <platform/sys/Outcome.h>

#include <string>
#include <utility>

namespace sys {

/// An advisory lock on a file, held until its end or the process's, however that comes about.
class Lock {
public:
    /// Makes the file where it is missing and locks it. `operation_would_block` when somebody else
    /// holds it.
    static Outcome<Lock> tryTake(const std::string& path);

private:
    explicit Lock(Handle handle) : handle_(std::move(handle)) {}

    Handle handle_;
};

}  // namespace sys
