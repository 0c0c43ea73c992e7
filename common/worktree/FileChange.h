#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <platform/kernel/OdString.h>

#include <cstdint>

namespace common {

/// What happened to a file. The numbers are stored and exchanged: `unchanged` stays last.
enum class FileChange : std::int32_t {
    added = 0,
    modified = 1,
    removed = 2,
    unchanged = 3,
};

/// The text code of `change`: the enumerator's name. Fails for a number that is none of them.
QRV_COMMON_EXPORT Expected<OdString> toString(FileChange change);

/// The change whose text code is exactly `code`. Fails, with a message that quotes it, for any
/// other text: nothing is trimmed and letter case counts.
QRV_COMMON_EXPORT Expected<FileChange> toFileChange(const OdString& code);

}  // namespace common
