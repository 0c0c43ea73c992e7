#pragma once

#include <common/base/Export.h>
#include <common/json/Value.h>

#include <string>

namespace jsonlib::json {

/// The whole document as indented text: four blanks a level, one member or element a line, no line
/// feed at the end. The same in every locale. Fails only when memory ends.
///
/// Reals have sixteen digits after the point. An infinite one is written as "inf" or "-inf" and one
/// that is no number as "nan" or "-nan", which no reader takes back.
QRV_COMMON_EXPORT std::wstring write(const Value& value);

}  // namespace jsonlib::json
