#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/state/State.h>
#include <platform/kernel/OdString.h>

namespace common {

/// Reads the state file at `statePath`. Most users want `Cache::get`.
///
/// An error is returned when the file has no head, the head no reference, a list an element that is
/// no object, or a file change an unknown name. `OdError` is thrown when the file cannot be read or
/// is not JSON, and `JsonParseError`, a kind of it, when a required member is missing or a member
/// has the wrong type. A file that ends inside a string throws `std::length_error`.
///
/// The number of the head's commit is taken from the head's member "head", and only when there is a
/// member "commit". Of two renames to one path, and of two index entries of one path, the first
/// counts.
QRV_COMMON_EXPORT Expected<State> deserialize(const OdString& statePath);

/// Replaces the file at `statePath` by `state`, durably and as a whole; never throws. On an error
/// (a file change without a name, a file that cannot be written) the old file stays as it was. The
/// error has no text when there was no memory for one.
///
/// Not written are the drawings of the handles of a conflict, and handles that are modified blocks
/// only.
QRV_COMMON_EXPORT Expected<void> writeState(const State& state, const OdString& statePath);

}  // namespace common
