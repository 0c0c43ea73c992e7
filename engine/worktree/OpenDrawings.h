#pragma once

#include <engine/worktree/WorkingTree.h>
#include <platform/kernel/OdString.h>

#include <optional>

namespace qrv {

/// The file that a CAD program lays beside a drawing that it has open, if one lies there: a ".dwl"
/// or ".dwl2". It may outlive a program that crashed.
std::optional<OdString> lockBeside(const OdString& path, const WorkingTree& workingTree);

}  // namespace qrv
