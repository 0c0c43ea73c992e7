#pragma once

#include <common/state/State.h>
#include <engine/history/History.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv {

/// What in a state cannot be, whatever the history says, one text for each finding: a branch, path
/// or storage URL that is none, a path twice.
std::vector<OdString> problemsOf(const common::State& state);

/// Whether the branch that the state names stands for the commit whose files those of HEAD are. An
/// interrupted command may have changed the one and not the other, as long as its entry is noted.
/// May throw `DatabaseError`.
bool isStateOfHistory(const common::State& state, History& history);

}  // namespace qrv
