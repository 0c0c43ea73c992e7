#pragma once

#include <platform/kernel/OdString.h>

namespace qrv_cli {

enum class Colour { bold, red, green, yellow, cyan };

/// The text in a colour, when standard output is a terminal and the environment has no NO_COLOR;
/// otherwise the text as it is. Line ends stay outside the colour.
OdString coloured(Colour colour, const OdString& text);

}  // namespace qrv_cli
