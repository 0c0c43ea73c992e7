#include <cli/user/ProjectRegistry.h>
#include <common/config/Config.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/OpenState.h>

#include <QByteArray>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace qrv::cli {

namespace {

namespace fs = std::filesystem;
using common::Config;
using common::ConfigData;

/// The variable's bytes; empty where it is missing.
fs::path variable(const char* name) {
    return qgetenv(name).toStdString();
}

ErrorMessage unreadable(const OdString& folder, const OdString& reason) {
    return {OdString::format(tr(L"The registry of projects '%ls' cannot be read: %ls"),
                             printable(common::ConfigPath::configFile(folder)), reason)};
}

Expected<std::shared_ptr<Config>> openRegistry(const Host& host) {
    const Expected<OdString> folder = configurationFolder();
    if (!folder)
        return folder.error();
    try {
        Expected<std::shared_ptr<Config>> config = Config::load(*folder, host);
        if (!config)
            return unreadable(*folder, config.error().message);
        return config;
    } catch (const std::length_error&) {
        return unreadable(*folder, tr(L"it ends in the middle of a text"));
    }
}

std::vector<RegisteredProject> listed(const ConfigData& registry) {
    std::vector<RegisteredProject> projects;
    for (const auto& [path, info] : registry.read())
        projects.push_back({path, info.name, info.uid});
    return projects;
}

/// Asks the library which paths mean the folder, by what it would remove.
std::vector<RegisteredProject> projectsIn(const OdString& folder, const ConfigData& registry) {
    ConfigData others = registry;
    others.remove(folder);
    std::vector<RegisteredProject> projects = listed(registry);
    std::erase_if(projects, [&others](const RegisteredProject& project) {
        return others.read().contains(project.path);
    });
    return projects;
}

}  // namespace

Expected<OdString> configurationFolder() {
    if (const fs::path folder = variable("QRV_CONFIG_DIR"); !folder.empty())
        return toText(fs::absolute(folder));
    if (const fs::path folder = variable("XDG_CONFIG_HOME"); folder.is_absolute())
        return toText(folder / "qrv");
    if (const fs::path home = variable("HOME"); !home.empty())
        return toText(fs::absolute(home) / ".config/qrv");
    return ErrorMessage{
        tr(L"The folder of your configuration is unknown: neither QRV_CONFIG_DIR nor HOME is set")};
}

Expected<std::vector<RegisteredProject>> registeredProjects() {
    const Host host;
    const Expected<std::shared_ptr<Config>> config = openRegistry(host);
    if (!config)
        return config.error();
    return listed((*config)->read());
}

Expected<std::vector<RegisteredProject>> projectsIn(const OdString& folder) {
    const Host host;
    const Expected<std::shared_ptr<Config>> config = openRegistry(host);
    if (!config)
        return config.error();
    return projectsIn(folder, (*config)->read());
}

Expected<RegisteredProject> registerProject(const common::RootPath& root, const OdString& name) {
    const Host host;
    Expected<std::shared_ptr<Config>> config = openRegistry(host);
    if (!config)
        return config.error();
    const std::vector<RegisteredProject> known = projectsIn(root.path(), (*config)->read());
    RegisteredProject project = {root.path(), name, {}};
    if (!known.empty())
        project = {known.front().path, name, known.front().uid};
    (*config)->write().data.add(root.path(), name, project.uid);
    // The end of its last owner writes the registry.
    config->reset();
    if (!host.lastWrite())
        return host.lastWrite().error();
    return project;
}

Expected<std::vector<RegisteredProject>> unregisterProjects(const OdString& folder) {
    const Host host;
    Expected<std::shared_ptr<Config>> config = openRegistry(host);
    if (!config)
        return config.error();
    std::vector<RegisteredProject> known = projectsIn(folder, (*config)->read());
    if (known.empty())
        return known;
    (*config)->write().data.remove(folder);
    config->reset();
    if (!host.lastWrite())
        return host.lastWrite().error();
    return known;
}

}  // namespace qrv::cli
