#pragma once

#include <string_view>

namespace sys {

/// The name of a new file before it is published.
inline bool isTemporaryName(std::string_view name) {
    return name.starts_with('.') && name.ends_with(".qrv-tmp");
}

}  // namespace sys
