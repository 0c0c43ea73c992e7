#pragma once

#include <common/state/State.h>

#include <string>

namespace qrv_test {

/// The bytes of the state file as a JSON value and the general writer give them: the slow way to
/// what `common::writeState` must write. Every file change must have a name.
std::string treeWritten(const common::State& state);

}  // namespace qrv_test
