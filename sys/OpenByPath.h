#pragma once

namespace sys {

/// Opens a file for a library that does so by path, with the arguments and the answer of the
/// system's `open`; but nobody waits for the other end of a pipe: what is neither a regular file
/// nor a folder is refused with EINVAL.
int openWithoutWaiting(const char* path, int flags, int permissions);

}  // namespace sys
