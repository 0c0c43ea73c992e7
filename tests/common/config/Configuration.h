#pragma once

#include <common/config/Config.h>
#include <tests/support/Files.h>
#include <tests/support/RecordingIo.h>
#include <tests/support/TemporaryFolder.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qrv_test {

/// A configuration directory of one test, empty at first.
struct Configuration {
    TemporaryFolder folder;
    RecordingIo io;

    OdString directory() const { return folder.text(); }
    std::filesystem::path file() const { return folder / "directories.state"; }
    void write(std::string_view bytes) const { writeFile(file(), bytes); }
    std::string bytes() const { return readFile(file()); }

    Expected<std::shared_ptr<common::Config>> load() const {
        return common::Config::load(directory(), io);
    }
    /// The loaded configuration; fails the test's run when it cannot be loaded.
    std::shared_ptr<common::Config> loaded() const { return load().value(); }
};

/// The projects as texts that a failing test can print: path, name, uid.
using Projects = std::vector<std::vector<std::string>>;
inline Projects shown(const std::map<OdString, common::ProjectInfo>& projects) {
    Projects result;
    for (const auto& [path, project] : projects)
        result.push_back({path.toNarrow(), project.name.toNarrow(), project.uid.toNarrow()});
    return result;
}

/// The bytes of a configuration file that is kept beside the tests.
inline std::string configSample(const std::string& name) {
    return readFile(std::string(QRV_CONFIG_SAMPLES) + "/" + name + ".sample");
}

}  // namespace qrv_test
