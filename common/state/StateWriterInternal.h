#pragma once

#include <common/base/Expected.h>
#include <common/state/State.h>
#include <platform/kernel/OdString.h>

namespace common {

/// What is told when something was thrown while a state was written.
ErrorMessage unexpectedStateError();

/// Writes the state to `target`, which messages call `statePath`. Otherwise as `writeState`, but
/// that it throws `std::bad_alloc` when there is no memory for its message either.
Expected<void> replaceState(const State& state, const OdString& target, const OdString& statePath);

}  // namespace common
