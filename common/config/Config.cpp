#include <common/config/Config.h>
#include <common/config/ConfigFileInternal.h>
#include <common/repository/DeferredWriteInternal.h>
#include <platform/kernel/OdError.h>

#include <utility>

namespace common {

namespace {

constexpr int anyKind = 0x1FFF;

/// The live configurations of this process. Entries stay; one whose configuration has ended is used
/// again.
struct LiveConfigs {
    LiveConfigs() = default;
    LiveConfigs(const LiveConfigs&) = delete;
    LiveConfigs& operator=(const LiveConfigs&) = delete;
    ~LiveConfigs() { hasEnded = true; }

    std::map<OdString, std::weak_ptr<Config>> byDirectory;

    // It ends with the process, before objects of the application may, and those may still load
    // one.
    static constinit bool hasEnded;
};

constinit bool LiveConfigs::hasEnded = false;

/// Null when they have ended.
LiveConfigs* liveConfigs() {
    if (LiveConfigs::hasEnded)
        return nullptr;
    static LiveConfigs configs;
    return &configs;
}

std::shared_ptr<Config> liveConfig(const OdString& directory) {
    const LiveConfigs* live = liveConfigs();
    if (live == nullptr)
        return nullptr;
    const auto found = live->byDirectory.find(directory);
    return found == live->byDirectory.end() ? nullptr : found->second.lock();
}

Expected<ConfigData> readRegistry(const ut::FileName& file) {
    if (!file.exists(anyKind))
        return ConfigData();
    try {
        return readConfigFile(file.getFullPath());
    } catch (const OdError& error) {
        return ErrorMessage{error.description(), 0};
    }
}

}  // namespace

Expected<std::shared_ptr<Config>> Config::load(const OdString& directory, const IoInterface& io) {
    const Expected<ConfigPath> path = ConfigPath::get(directory);
    if (!path)
        return path.error();
    if (std::shared_ptr<Config> live = liveConfig(directory))
        return live;
    Expected<ConfigData> registry = readRegistry(ut::FileName(path->configFile()));
    if (!registry)
        return registry.error();
    return shared(*path, std::move(*registry), io);
}

std::shared_ptr<Config> Config::shared(const ConfigPath& path, ConfigData data,
                                       const IoInterface& io) {
    std::shared_ptr<Config> config(new Config(path, std::move(data), io));
    if (LiveConfigs* live = liveConfigs())
        live->byDirectory[path.path()] = config;
    return config;
}

Config::Config(const ConfigPath& path, ConfigData data, const IoInterface& io)
    : file_(path.configFile()),
      path_(path),
      data_(std::move(data)),
      io_(io),
      target_(absolutePathOf(file_)),
      unexpected_(unexpectedConfigError()) {
}

Config::Config(Config&& other) noexcept = default;

Config::~Config() {
    if (!modified_)
        return;
    writeAndReport([this] { return writeConfigFile(data_, target_, file_.getFullPath()); },
                   std::move(unexpected_), io_);
}

WriteConfigData Config::write() {
    modified_ = true;
    return {data_, listeners_};
}

void Config::addListener(ConfigListener& listener) {
    listeners_.insert(listener);
}

void Config::removeListener(ConfigListener& listener) {
    listeners_.erase(listener);
}

}  // namespace common
