#pragma once

#include <common/state/State.h>
#include <engine/worktree/Baseline.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qrv {

/// A baseline, and what else of the state a look at the repository needs, as they are kept in
/// ".qrv/baseline": neither the state, whose index is long, nor the files of HEAD need be read
/// then. It holds for one version of the state file and one commit; whoever reads it compares both.
/// It is made of other files only, so that it may be lost. docs/formats/baseline-file.md describes
/// it, and when it is believed.
struct KeptBaseline {
    sys::FileStamp stateFile;
    /// The commit whose files those of HEAD are; empty before the first one.
    OdString headCommit;
    /// Without index and conflicts.
    common::State state;
    std::shared_ptr<const Baseline> baseline;
};

/// The bytes of the file.
std::string toBytes(const KeptBaseline& kept);

/// Whether a later program wrote them, in a form that this one does not know.
bool isOfLaterProgram(std::string_view bytes);

/// Nothing for bytes that `toBytes` did not make.
std::optional<KeptBaseline> fromBytes(std::vector<char> bytes);

}  // namespace qrv
