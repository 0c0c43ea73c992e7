#pragma once

#include <cstdint>
#include <string>

namespace sys {

/// The user whose rights this process has.
std::uint32_t effectiveUser();

/// The name of that user; the number, as digits, of one that the system does not know.
std::string userName(std::uint32_t user);

}  // namespace sys
