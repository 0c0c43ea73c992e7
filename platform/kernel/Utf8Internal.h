#pragma once

#include <string>
#include <string_view>

namespace kernel {

/// The UTF-16 units of UTF-8 bytes. A byte that is not part of valid UTF-8 gives the unit
/// 0xDC00 + byte. Throws `std::length_error` for more units than a text may have.
std::wstring unitsFromUtf8(std::string_view bytes);

/// The bytes of UTF-16 units, such that `utf8FromUnits(unitsFromUtf8(bytes))` is `bytes`, whatever
/// they are. A surrogate without a partner is one byte when it is one of those above, else three.
std::string utf8FromUnits(std::wstring_view units);

}  // namespace kernel
