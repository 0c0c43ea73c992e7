#pragma once

#include <common/state/State.h>

#include <optional>
#include <string_view>

namespace common {

/// The state in the bytes of a state file, made row by row without a JSON value in between: the
/// quick way for files as `writeState` makes them, whatever their white space and the order of
/// their members.
///
/// Nothing for every other text, faulty or not: an unknown, repeated or missing member, an empty
/// list, a number beyond the 64-bit range, a byte-order mark. What the text means, or which of its
/// errors counts, is then for `deserialize` to say.
std::optional<State> readRows(std::string_view bytesUtf8);

}  // namespace common
