#pragma once

#include <common/common.h>

#include <map>

/// What the project's last commit holds, so that changes since then can be told. The library leaves
/// this to the host; ours is a small JSON file, a real one has a database of all commits.
struct LastCommit {
    /// The last commit of `root`; an empty one with the number 0 when there was none. Fails when
    /// the file is there but cannot be read; throws `std::length_error` when it ends inside a
    /// string.
    static Expected<LastCommit> load(const common::RootPath& root);
    /// Replaces the file as a whole. On failure the old one stays.
    Expected<void> save(const common::RootPath& root) const;

    int number = 0;
    /// The storage URL of each file, by its path below the root.
    std::map<OdString, OdString> urls;
};
