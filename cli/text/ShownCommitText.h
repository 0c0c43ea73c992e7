#pragma once

#include <common/json/Value.h>
#include <engine/operations/Show.h>

#include <string>

namespace qrv::cli {

/// The object of the commit (see `toJson` in CommitText.h), with "references" and "changes".
jsonlib::json::Object shownCommitDocument(const ShownCommit& shown);

/// The commit and each file that it changed, for a person.
std::string shownCommitText(const ShownCommit& shown);

}  // namespace qrv::cli
