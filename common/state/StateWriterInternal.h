#pragma once

#include <common/base/Expected.h>
#include <common/state/State.h>
#include <platform/kernel/OdString.h>

namespace common {

/// What is told when something was thrown while a state was written.
ErrorMessage unexpectedStateError();

/// `writeState`, but that it throws `std::bad_alloc` when there is no memory for its message either.
Expected<void> replaceState(const State& state, const OdString& statePath);

}  // namespace common
