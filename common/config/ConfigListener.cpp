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
    // A listener may change the set while it is told, so the round goes over those who were in it
    // at its begin and asks before each call whether that one still is.
    const ConfigListeners round = listeners;
    for (const std::reference_wrapper<ConfigListener>& listener : round) {
        if (listeners.contains(listener))
            listener.get().onConfigChanged();
    }
}

}  // namespace common
