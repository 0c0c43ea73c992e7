#pragma once

#include <common/json/Value.h>
#include <platform/kernel/OdString.h>

namespace common {

/// The object that the text of a whole file is. A text that is not JSON throws `OdError` with a
/// translated text, JSON of another type `JsonParseError`; an unclosed string throws
/// `std::length_error`, as the reader does.
jsonlib::json::Object parseObject(const OdString& text);

}  // namespace common
