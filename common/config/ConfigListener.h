#pragma once

#include <common/base/Export.h>
#include <common/config/ConfigData.h>

#include <functional>
#include <set>

namespace common {

/// Wants to know when the registry of projects was opened for writing. The library holds references
/// only: nobody deletes a listener through this interface, whose one virtual operation is the call.
class QRV_COMMON_EXPORT ConfigListener {
public:
    /// Called after a write handle is released, whether or not anything changed. Must not throw.
    /// May add and remove listeners, itself included.
    virtual void onConfigChanged() = 0;

protected:
    ConfigListener() = default;
    ConfigListener(const ConfigListener&) = default;
    ConfigListener& operator=(const ConfigListener&) = default;
    ~ConfigListener() = default;
};

/// Orders listeners by their addresses.
struct QRV_COMMON_EXPORT ListenerOrder {
    /// Whether `left` stands before `right` in memory.
    bool operator()(const std::reference_wrapper<ConfigListener>& left,
                    const std::reference_wrapper<ConfigListener>& right) const;
};

/// The registered listeners; owns none of them.
using ConfigListeners = std::set<std::reference_wrapper<ConfigListener>, ListenerOrder>;

/// A handle for changing the registry. Its end tells every listener once, in the order of their
/// addresses: those that are registered when the round begins and still are when their turn comes.
struct QRV_COMMON_EXPORT WriteConfigData {
    /// Both must outlive the handle. `Config::write` makes one.
    WriteConfigData(ConfigData& registry, ConfigListeners& registered);
    WriteConfigData(const WriteConfigData&) = delete;
    WriteConfigData& operator=(const WriteConfigData&) = delete;
    /// Tells the listeners.
    ~WriteConfigData();

    ConfigData& data;            ///< the registry to change
    ConfigListeners& listeners;  ///< who is told
};

}  // namespace common
