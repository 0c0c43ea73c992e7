#pragma once

#include <platform/kernel/OdString.h>

#include <optional>
#include <vector>

namespace qrv {

/// What somebody who typed `word` may have meant: the candidate with the fewest typing mistakes in
/// between, the first of several. A mistake is a unit too much, missing or wrong, or two
/// neighbours the wrong way round; letter case is none. Nothing when each is further away than one
/// mistake, or two where the word has at least six units; a word of one or two units is not guessed
/// at.
std::optional<OdString> closest(const OdString& word, const std::vector<OdString>& candidates);

}  // namespace qrv
