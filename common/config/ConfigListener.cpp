#include <common/config/ConfigListener.h>

namespace common {

bool ListenerOrder::operator()(const std::reference_wrapper<ConfigListener>& left,
                               const std::reference_wrapper<ConfigListener>& right) const {
    return std::less<>()(&left.get(), &right.get());
}

WriteConfigData::WriteConfigData(ConfigData& registry, ConfigListeners& registered)
    : data(registry), listeners(registered) {
}

WriteConfigData::~WriteConfigData() {
    ConfigListeners registered;
    bool isRemembered = true;
    try {
        registered = listeners;
    } catch (...) {
        // Without memory for them, those who register in the round are told as well.
        isRemembered = false;
    }
    for (auto next = listeners.begin(); next != listeners.end();) {
        const std::reference_wrapper<ConfigListener> listener = *next;
        if (!isRemembered || registered.contains(listener))
            listener.get().onConfigChanged();
        // Looked up again: the listener may have changed the set, and be gone itself.
        next = listeners.upper_bound(listener);
    }
}

}  // namespace common
