#pragma once

#include <chrono>

namespace qrv_cli {

/// A file that keeps what is stored once more counts as new again when it is older than this, far
/// less than the age at which unused versions are dropped.
constexpr std::chrono::hours ageToRefresh{24};

}  // namespace qrv_cli
