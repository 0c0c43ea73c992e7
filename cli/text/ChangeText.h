#pragma once

#include <common/json/Value.h>
#include <common/worktree/File.h>
#include <common/worktree/FileChange.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv::cli {

/// The word for a change in the user's language.
OdString changeWord(common::FileChange change);

/// "  modified  plans/ground.dwg" and a line feed; the words are aligned.
OdString changeLine(common::FileChange change, const OdString& path);

/// A list of objects with "path" and "change", the latter as in the state file.
jsonlib::json::Array toJson(const std::vector<common::StagedFile>& files);

}  // namespace qrv::cli
