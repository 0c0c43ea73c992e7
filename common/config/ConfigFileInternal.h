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

/// Replaces the configuration file durably and as a whole. Never throws; on an error the old file
/// stays.
Expected<void> writeConfigFile(const ConfigData& projects, const OdString& file);

}  // namespace common
