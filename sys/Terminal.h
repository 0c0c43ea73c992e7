#pragma once

#include <string>

namespace sys {

enum class Stream { output, error };

/// Whether the stream ends at a terminal.
bool isTerminal(Stream stream);
/// The terminal's width in columns; 80 when nobody says.
int terminalWidth(Stream stream);

/// The name of the user who runs the process, and of the machine; "unknown" when the system has
/// none.
std::string userName();
std::string hostName();

}  // namespace sys
