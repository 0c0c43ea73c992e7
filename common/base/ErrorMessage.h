#pragma once

#include <platform/kernel/OdString.h>

#include <cstdint>

/// Why an operation failed, as a text for the user. Every message that the library makes has code
/// 0.
struct ErrorMessage {
    OdString message;       ///< for the user, in their language where there is a catalogue
    std::int32_t code = 0;  ///< 0, or a number that means something to the host
};
