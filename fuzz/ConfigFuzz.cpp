// A registry that loads is written, and loads again as the equal registry.

#include <common/config/Config.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>

// A write that fails shows in what is loaded after it.
static const struct Io final : common::IoInterface {
    bool acceptsPath(const OdString&) const override { return true; }
    void reportResult(Expected<void>) const override {}
} io;

static std::shared_ptr<common::Config> load(const OdString& directory) try {
    const auto config = common::Config::load(directory, io);
    return config ? *config : nullptr;
} catch (const std::length_error&) {
    return nullptr;  // The answer to a string without an end.
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const std::string folder = std::filesystem::temp_directory_path() /
                                      ("config-fuzz-" + std::to_string(std::random_device()()));
    std::filesystem::create_directory(folder);
    std::ofstream(folder + "/directories.state", std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    if (auto config = load(OdString::fromNarrow(folder))) {
        const auto projects = config->write().data.read();
        config.reset();
        config = load(OdString::fromNarrow(folder));
        if (!config || config->readProjects() != projects)
            std::abort();
    }
    std::filesystem::remove_all(folder);
    return 0;
}
