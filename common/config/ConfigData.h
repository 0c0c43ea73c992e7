#pragma once

#include <common/base/Export.h>
#include <platform/kernel/OdString.h>

#include <map>

namespace common {

/// What is registered of a project.
struct ProjectInfo {
    OdString name;  ///< to show
    OdString uid;   ///< the host's identifier of the project, any text

    friend bool operator==(const ProjectInfo&, const ProjectInfo&) = default;
};

/// The registry of projects, by the path of their folder. The map compares paths as texts; `add`
/// and `remove` compare them as files, so that another spelling of a folder means the same project.
class QRV_COMMON_EXPORT ConfigData {
public:
    /// The projects by the paths of their folders, in the order of code units.
    const std::map<OdString, ProjectInfo>& read() const { return projects_; }
    /// The same for changing, past the comparison of folders.
    std::map<OdString, ProjectInfo>& write() { return projects_; }

    /// Registers the project, or gives the first one in that folder a new name and uid; its path
    /// keeps the spelling it has.
    void add(const OdString& path, const OdString& name, const OdString& uid);
    /// Removes every project in that folder; without one changes nothing.
    void remove(const OdString& path);

private:
    std::map<OdString, ProjectInfo> projects_;
};

}  // namespace common
