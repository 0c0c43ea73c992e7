#pragma once

#include <common/base/ErrorMessage.h>
#include <platform/kernel/OdString.h>

namespace common {

/// The text for `source` in the host's message catalogue, or `source` itself when there is no
/// catalogue or no entry. Placeholders are still in it: the look-up comes first, the filling after.
OdString translate(const wchar_t* source);

/// An error whose text is looked up and then filled with the arguments.
template <class... Arguments>
ErrorMessage translatedError(const wchar_t* source, const Arguments&... arguments) {
    return {OdString::format(translate(source), arguments...), 0};
}

}  // namespace common
