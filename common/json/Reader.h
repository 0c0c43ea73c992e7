#pragma once

#include <common/base/Export.h>
#include <common/json/Value.h>

namespace jsonlib::json {

/// Reads the JSON value at the start of the text [begin, end) into `value`; what follows that value
/// is not looked at. False for an empty text and for a syntax error; `value` then stays as it was,
/// as it does when an exception passes.
///
/// More is accepted than JSON allows: a comma after the last member or element, any control
/// character in a string, "1." as a real. A number beyond the 64-bit range becomes its nearest end,
/// a real that is too large infinity. A key that occurs twice keeps the later value. A NUL between
/// tokens ends the text.
///
/// A string that the text ends in throws `std::length_error`, also where no string may stand; a
/// lack of memory throws as usual.
QRV_COMMON_EXPORT bool read(const wchar_t* begin, const wchar_t* end, Value& value);

}  // namespace jsonlib::json
