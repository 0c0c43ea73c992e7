#pragma once

#include <functional>
#include <string_view>

namespace qrv {

/// What a line of a patch is.
enum class PatchLine { heading, position, context, removed, added, remark };

/// Takes the lines of a patch, one after the other, as bytes without a line feed at their end.
using PatchSink = std::function<void(PatchLine kind, std::string_view line)>;

}  // namespace qrv
