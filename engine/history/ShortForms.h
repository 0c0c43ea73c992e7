#pragma once

#include <platform/kernel/OdString.h>

#include <cstdint>

namespace qrv {

/// The first digits of the hash: enough for a person, and for `findCommit` in most repositories.
OdString shortHash(const OdString& hash);

/// "2024-03-05 14:07:09 UTC".
OdString timeText(std::int64_t seconds);

}  // namespace qrv
