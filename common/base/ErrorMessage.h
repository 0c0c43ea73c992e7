#pragma once

#include <platform/kernel/OdString.h>

#include <cstdint>

/// Why an operation failed, as a text for the user. Every message that the library makes has code
/// 0.
struct ErrorMessage {
    OdString message;
    std::int32_t code = 0;
};
