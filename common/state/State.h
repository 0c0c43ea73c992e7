#pragma once

#include <common/base/Export.h>
#include <common/state/ConflictData.h>
#include <common/worktree/File.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace common {

/// What the next commit builds on: a branch and, where one is known, the number of its commit.
///
/// A state that is written with a commit cannot be read back (see `deserialize`): leave it empty.
struct Head {
    OdString reference = L"master";      ///< the branch
    std::optional<std::int64_t> commit;  ///< the number of its commit; hosts leave it empty

    friend bool operator==(const Head&, const Head&) = default;
};

/// What was seen of one file when its index entry was last updated.
struct IndexData {
    /// The file's time of modification, in ticks of `ut::DateTime`.
    std::int64_t lastChecked = 0;
    /// The caller's verdict at that time.
    bool modified = false;

    friend bool operator==(const IndexData&, const IndexData&) = default;
};

/// Everything that is remembered of a repository from one use to the next. All paths are relative
/// to the repository's root; maps are ordered by code units.
struct State {
    /// The branch that the next commit goes to.
    Head head;
    /// In staging order.
    std::vector<StagedFile> stagedFiles;
    /// From the new path to the previous one.
    std::map<OdString, OdString> renames;
    /// What was last seen of each file, by its path.
    std::map<OdString, IndexData> index;
    /// At most one for each path, as long as `updateConflictData` makes the changes.
    std::vector<ConflictData> conflicts;

    friend bool operator==(const State&, const State&) = default;
};

}  // namespace common
