#pragma once

#include <sys/Folder.h>
#include <sys/Handle.h>
#include <sys/Outcome.h>

#include <string>
#include <utility>

namespace sys {

/// An advisory lock on a file, held until its end or the process's, however that comes about.
class Lock {
public:
    /// Makes the file below the folder where it is missing and locks it. `operation_would_block`
    /// when somebody else holds it; `operation_not_supported` when it is no regular file.
    static Outcome<Lock> tryTake(const Folder& folder, const std::string& relative);

private:
    explicit Lock(Handle handle) : handle_(std::move(handle)) {}

    Handle handle_;
};

}  // namespace sys
