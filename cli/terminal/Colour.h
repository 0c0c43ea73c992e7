#pragma once

#include <platform/kernel/OdString.h>

#include <string>
#include <string_view>

namespace qrv::cli {

enum class Colour { bold, red, green, yellow, cyan };

/// The text in a colour, when standard output is a terminal and the environment has no NO_COLOR;
/// otherwise the text as it is. Line ends stay outside the colour.
OdString coloured(Colour colour, const OdString& text);

/// The same of bytes that need not be text.
std::string coloured(Colour colour, std::string_view bytes);

}  // namespace qrv::cli
