#pragma once

#include <engine/diff/Difference.h>
#include <platform/kernel/OdString.h>

#include <functional>
#include <string>
#include <string_view>

namespace qrv {

enum class PatchLine { heading, position, context, removed, added, remark };

/// Takes the lines of a patch, one after the other, as bytes without a line feed at their end.
using PatchSink = std::function<void(PatchLine kind, std::string_view line)>;

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
