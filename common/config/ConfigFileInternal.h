#pragma once

#include <common/base/Expected.h>
#include <common/config/ConfigData.h>
#include <platform/kernel/OdString.h>

namespace common {

/// Reads the configuration file. An element of the registry that is no object is an error. Throws
/// `OdError` when the file cannot be read or is not JSON, `JsonParseError` when a member is missing
/// or of the wrong kind, `std::length_error` when the file ends inside a string. Of two projects
/// with exactly the same path the first counts.
Expected<ConfigData> readConfigFile(const OdString& file);

/// What is told when something was thrown while the configuration file was written.
ErrorMessage unexpectedConfigError();

/// Replaces the configuration file at `target`, which messages call `file`, durably and as a whole;
/// on an error the old file stays. Throws `std::bad_alloc` only when there is no memory for a
/// message.
Expected<void> writeConfigFile(const ConfigData& projects, const OdString& target,
                               const OdString& file);

}  // namespace common
