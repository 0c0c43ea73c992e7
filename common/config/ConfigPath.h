#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <platform/kernel/OdString.h>

namespace common {

/// A checked configuration directory. Only `get` makes one.
class QRV_COMMON_EXPORT ConfigPath {
public:
    /// Takes `directory`, making it and its parents where they are missing. One in which a folder
    /// stands at the path of the configuration file is taken without a further look.
    ///
    /// Fails when it is empty, and with a message that names it when it has no existing ancestor,
    /// lies in a folder that cannot be written, or cannot be made; folders made on the way may stay
    /// then.
    static Expected<ConfigPath> get(const OdString& directory);

    /// The directory as it was given.
    OdString path() const { return path_; }
    /// The path of the configuration file.
    OdString configFile() const { return configFile(path_); }
    /// The path of the configuration file of any directory: its path, the separator and
    /// "directories.state". Nothing is checked.
    static OdString configFile(const OdString& directory);

private:
    explicit ConfigPath(const OdString& directory) : path_(directory) {}

    OdString path_;
};

}  // namespace common
