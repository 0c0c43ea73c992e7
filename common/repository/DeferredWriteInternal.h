#pragma once

#include <common/base/Expected.h>
#include <common/repository/IoInterface.h>
#include <platform/kernel/OdString.h>
#include <platform/ut/FileName.h>

#include <utility>

namespace common {

/// Where the file lies, to be kept until it is written: another folder may be the current one then,
/// and another project's file there.
inline OdString absolutePathOf(ut::FileName file) {
    file.makeAbsolute();
    return file.getFullPath();
}

/// Writes what a host has let go of, and tells `io` how that went: exactly once, whatever fails on
/// the way. An exception of `write` is told as `unexpected`, which was made while there was memory
/// for it.
template <class Write>
void writeAndReport(Write write, ErrorMessage unexpected, const IoInterface& io) noexcept {
    Expected<void> result;
    try {
        result = write();
    } catch (...) {
        result = Expected<void>(std::move(unexpected));
    }
    try {
        io.reportResult(std::move(result));
    } catch (...) {
        // A host that throws here breaks its contract, and a destructor has nobody to pass it to.
    }
}

}  // namespace common
