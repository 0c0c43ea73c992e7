#pragma once

#include <cstddef>
#include <string>

namespace qrv_bench {

/// The text of a state file as the library writes it, with the given number of index entries: about
/// 210 characters each, paths of 40 to 50 characters, every tenth beyond ASCII. The same on every
/// call.
std::wstring stateDocument(std::size_t entries);

}  // namespace qrv_bench
