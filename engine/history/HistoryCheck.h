#pragma once

#include <engine/history/History.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv {

/// What is wrong with the history, one text for each finding, without repetitions; empty when all
/// is well: the pages of the file, its tables, rows that belong to nothing, the hash of every
/// commit, its parents, paths and URLs, references, a noted entry, and whether the files of HEAD
/// are those of the commit that `headNote` names. Changes nothing, and throws nothing but what has
/// to do with memory. Nobody else should write meanwhile.
std::vector<OdString> problemsOf(History& history);

}  // namespace qrv
