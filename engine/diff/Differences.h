#pragma once

#include <engine/diff/Difference.h>
#include <engine/tree/Renames.h>
#include <engine/tree/TreeChange.h>

#include <vector>

namespace qrv {

/// What the two trees do not have alike, file by file and without renames, in the same order.
std::vector<Difference> differencesOf(std::vector<TreeChange> changes);

/// Joins the halves of renamed files: a file that went and one that came are one that was renamed
/// when `noted` says so, or when their contents are the same and not empty. What has the same
/// contents on both sides falls out. The files are ordered by path, before and after.
std::vector<Difference> withRenames(std::vector<Difference> files, const Renames& noted = {});

}  // namespace qrv
