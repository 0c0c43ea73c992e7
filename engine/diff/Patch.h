#pragma once

#include <engine/diff/Difference.h>
#include <engine/diff/PatchLine.h>

#include <string_view>

namespace qrv {

/// What a patch says of a file before its lines: the names and whether it is new, renamed or
/// removed. Names with blanks, quotes, backslashes or control characters are quoted as in C.
void writePatchHeading(const Difference& difference, const PatchSink& sink);

/// The changed lines with three lines around them, in the unified form. Nothing when both texts are
/// equal. `difference` tells the names and which side is there.
void writePatchLines(const Difference& difference, std::string_view before, std::string_view after,
                     const PatchSink& sink);

/// What stands in a patch for a file whose lines are not compared. Programs that apply patches pass
/// over it.
void writeBinaryRemark(const Difference& difference, const PatchSink& sink);

}  // namespace qrv
