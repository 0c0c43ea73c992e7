#include <platform/ut/ScopedFault.h>
#include <tests/common/config/Configuration.h>
#include <tests/support/Catalogue.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <string>

namespace {

using common::ConfigPath;
using qrv_test::Configuration;

TEST(ConfigTranslation, CoversTheMessages) {
    const qrv_test::GermanHost host({
        {"VC config path is empty.", "leer"},
        {"The path %ls is not valid.", "falsch: %ls"},
        {"The directory %ls is not writable.", "gesperrt: %ls"},
        {"Could not create directory at: %ls", "nicht angelegt: %ls"},
        {"Unable to parse json, please check if syntax is valid", "kein JSON"},
        {"Error writing to file '%ls'", "nicht geschrieben: %ls"},
    });
    ASSERT_TRUE(host.isLoaded());
    const Configuration configuration;
    const OdString file = configuration.folder.text("directories.state");
    const OdString tooLong = configuration.directory() + L"/" + OdString(std::wstring(256, L'x'));
    EXPECT_EQ(ConfigPath::get(OdString()).error().message, L"leer");
    {
        const ut::ScopedFault noRoot(2, ENOENT);
        EXPECT_EQ(ConfigPath::get(L"/").error().message, L"falsch: /");
    }
    EXPECT_EQ(ConfigPath::get(tooLong).error().message, OdString(L"nicht angelegt: ") + tooLong);

    auto config = configuration.loaded();
    static_cast<void>(config->write());
    std::filesystem::create_directory(configuration.file());
    config.reset();
    EXPECT_EQ(configuration.io.results.at(0).error().message,
              OdString(L"nicht geschrieben: ") + file);

    std::filesystem::remove(configuration.file());
    configuration.write("no json");
    EXPECT_EQ(configuration.load().error().message, L"kein JSON");
    EXPECT_EQ(ConfigPath::get(file).error().message, OdString(L"gesperrt: ") + file);
}

}  // namespace
