#pragma once

#include <string>
#include <string_view>

namespace qrv {

/// The bytes as lower-case hexadecimal digits, two for each.
std::string toHex(std::string_view bytes);

/// The bytes that `toHex` gives these digits for; empty for a text that it never gives.
std::string fromHex(std::string_view digits);

}  // namespace qrv
