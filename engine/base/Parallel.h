#pragma once

#include <cstddef>
#include <functional>

namespace qrv {

/// Calls `work` for each number from 0 to below `count`, on all cores of the machine, and comes
/// back when all calls have. The calls come in any order and side by side, so each may change only
/// what is its own; the texts of the catalogue are for the calling thread alone. An exception of
/// one of them ends the work and is passed on.
void inParallel(std::size_t count, const std::function<void(std::size_t number)>& work);

/// How many calls run side by side at most.
std::size_t parallelCalls();

}  // namespace qrv
