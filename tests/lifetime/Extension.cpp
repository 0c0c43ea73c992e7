#include <common/common.h>
#include <tests/lifetime/Extension.h>

#include <unistd.h>

#include <string>
#include <utility>

namespace {

using qrv_test::Held;

/// Prints each result past all buffers, which may have ended already.
class PrintingIo : public common::IoInterface {
public:
    bool acceptsPath(const OdString&) const override { return true; }
    void reportResult(Expected<void> result) const override {
        const std::string line = result ? "written\n" : result.error().message.toNarrow() + "\n";
        static_cast<void>(!write(STDOUT_FILENO, line.data(), line.size()));
    }
};

/// Outlives everything that may report to it.
const common::IoInterface& printingIo() {
    static const common::IoInterface& io = *new PrintingIo;
    return io;
}

/// As an extension does in its daily life; the first message of a thread makes what belongs to that
/// thread alone.
void makeAMessage() {
    static_cast<void>(common::RootPath::get(L"/none", false));
}

void changeRegistry(common::Config& config) {
    config.write().data.write()[L"/none/a"] = {L"n", L"u"};
}

/// Opens the registry only when it is let go of.
class LateOpening {
public:
    explicit LateOpening(OdString folder) : folder_(std::move(folder)) {}
    LateOpening(const LateOpening&) = delete;
    LateOpening& operator=(const LateOpening&) = delete;
    ~LateOpening() {
        if (const auto config = common::Config::load(folder_, printingIo()))
            changeRegistry(**config);
    }

private:
    OdString folder_;
};

}  // namespace

#define QRV_EXTENSION_EXPORT extern "C" [[gnu::visibility("default")]]

QRV_EXTENSION_EXPORT void openCache(const char* folder, Held& held) {
    makeAMessage();
    const common::RootPath root = common::RootPath::get(folder, true).value();
    common::Cache::create(root, printingIo());
    std::shared_ptr<common::Cache> cache = common::Cache::get(root, printingIo()).value();
    cache->write().head.reference = L"roof";
    held = cache;
}

QRV_EXTENSION_EXPORT void openConfig(const char* folder, Held& held) {
    makeAMessage();
    std::shared_ptr<common::Config> config = common::Config::load(folder, printingIo()).value();
    changeRegistry(*config);
    held = config;
}

QRV_EXTENSION_EXPORT void openConfigLate(const char* folder, Held& held) {
    // The registry of loaded configurations is made, so that it also ends.
    static_cast<void>(common::Config::load(folder, printingIo()).value());
    held = std::make_shared<LateOpening>(folder);
}
