#pragma once

#include <sys/Outcome.h>

#include <system_error>

namespace qrv_test {

inline std::error_code code(std::errc error) {
    return std::make_error_code(error);
}

/// The error of an outcome whatever it holds.
template <class T>
std::error_code errorOf(const sys::Outcome<T>& outcome) {
    return outcome.error();
}

}  // namespace qrv_test
