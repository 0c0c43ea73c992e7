#pragma once

#include <common/base/Export.h>

#include <stdexcept>

namespace jsonlib::json {

/// The kinds of a value. The numbers are part of the error texts and never change.
enum class Value_type { object, array, string, boolean, integer, real, null };

/// A value was asked for as another kind than it is: "value type is 0 not 2".
struct QRV_COMMON_EXPORT ValueError : std::runtime_error {
    /// Composes the text from the numbers of the two kinds.
    ValueError(Value_type actual, Value_type expected);
};

}  // namespace jsonlib::json
