#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv::cli {

/// A project in the user's registry.
struct RegisteredProject {
    OdString path;
    OdString name;
    /// What a server calls it, as another host registered it; this program leaves it empty.
    OdString uid;
};

// Each function below reads the registry anew and, where it changes it, has written it when it
// returns. They fail with a message that names the file: when the folder is unknown, when the
// registry cannot be read, and when it cannot be written, in which case the old file stays.

/// The folder of the user's configuration: QRV_CONFIG_DIR; else "qrv" in XDG_CONFIG_HOME, where
/// that is an absolute path; else ".config/qrv" in HOME. A variable that is empty counts as
/// missing. Fails when none of them says it.
Expected<OdString> configurationFolder();

/// In the order of their paths.
Expected<std::vector<RegisteredProject>> registeredProjects();

/// Those registered in the folder, whatever the spelling of their paths.
Expected<std::vector<RegisteredProject>> projectsIn(const OdString& folder);

/// Registers the project or gives the registered one a new name. Path and uid of a registered one
/// stay. Gives the project as it now is registered.
Expected<RegisteredProject> registerProject(const common::RootPath& root, const OdString& name);

/// Removes all that are registered in the folder, which need not exist, and gives them. Where there
/// is none, nothing is written.
Expected<std::vector<RegisteredProject>> unregisterProjects(const OdString& folder);

}  // namespace qrv::cli
