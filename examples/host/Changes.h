#pragma once

#include "LastCommit.h"
#include <common/common.h>

#include <vector>

/// How the files that were found below `root` differ from the last commit, by their contents.
common::RepoChanges changesSince(const LastCommit& commit, const std::vector<common::File>& files,
                                 const common::RootPath& root);
