#pragma once

namespace sys {

/// Counts one system call for the living `ScopedFault`, if there is one. True, with `errno` set,
/// when this call is the one that fails; does not return when it is the one that ends the process.
bool faultFires();

}  // namespace sys
