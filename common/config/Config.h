#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/base/MovedFlag.h>
#include <common/config/ConfigData.h>
#include <common/config/ConfigListener.h>
#include <common/config/ConfigPath.h>
#include <common/repository/IoInterface.h>
#include <platform/kernel/OdString.h>
#include <platform/ut/FileName.h>

#include <map>
#include <memory>

namespace common {

/// The configuration of one directory, shared by all who load it in this process. When its last
/// owner lets go, the file is written if `write` was ever called, and the host is told how that
/// went.
///
///     Expected<std::shared_ptr<Config>> config = Config::load(directory, io);
///     if (!config)
///         return config.error();
///     (*config)->write().data.add(path, name, uid);  // listeners are told when the statement ends
class QRV_COMMON_EXPORT Config {
public:
    /// The live configuration of `directory`, or the one read from its file; a missing file is an
    /// empty registry, and a missing directory is made. `directory` is compared as a text. `io`
    /// must outlive the configuration; when there is a live one, that one's own stays in force.
    ///
    /// Fails with the error of `ConfigPath::get`, and with the reader's message when the file is no
    /// registry; the file is untouched then. A file cut off inside a string throws
    /// `std::length_error`.
    static Expected<std::shared_ptr<Config>> load(const OdString& directory, const IoInterface& io);

    Config(const Config&) = delete;
    Config& operator=(const Config&) = delete;
    /// The moved-from configuration writes nothing.
    Config(Config&& other) noexcept;
    Config& operator=(Config&&) = delete;
    /// Writes the file when `write` was ever called, and tells the host. Never throws.
    ~Config();

    /// The registry as it is now, unsaved changes included.
    const ConfigData& read() const { return data_; }
    /// The registered projects by the paths of their folders.
    const std::map<OdString, ProjectInfo>& readProjects() const { return data_.read(); }
    /// A handle for changes, whose end tells the listeners. From now on the file will be written,
    /// changed or not.
    WriteConfigData write();

    /// Registers a listener, which must be removed before it ends. Adding it again does nothing.
    void addListener(ConfigListener& listener);
    /// Removes a listener, which must be registered.
    void removeListener(ConfigListener& listener);

    /// The configuration's directory.
    ConfigPath path() const { return path_; }

private:
    Config(const ConfigPath& path, ConfigData data, const IoInterface& io);

    static std::shared_ptr<Config> shared(const ConfigPath& path, ConfigData data,
                                          const IoInterface& io);

    ConfigListeners listeners_;
    ut::FileName file_;
    ConfigPath path_;
    MovedFlag modified_;
    ConfigData data_;
    const IoInterface& io_;
    // The file lies here, whatever folder is the current one when it is written.
    OdString target_;
    // To be told when there is no memory for any other message.
    ErrorMessage unexpected_;
};

}  // namespace common
