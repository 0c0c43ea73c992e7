#pragma once

#include <string_view>

namespace jsonlib::json::detail {

/// The real nearest to a decimal number such as "-1.", "0.25" or "1.5e+3", which must be well
/// formed. One too large for a double gives infinity, one too small zero, with the number's sign.
/// The same in every locale.
double toReal(std::string_view decimal);

}  // namespace jsonlib::json::detail
