#pragma once

#include <common/base/Export.h>
#include <platform/kernel/OdString.h>

#include <map>

namespace common {

/// What is registered of a project.
struct ProjectInfo {
    /// The name to show.
    OdString name;
    OdString uid;

    friend bool operator==(const ProjectInfo&, const ProjectInfo&) = default;
};

/// The registry of projects, by the path of their folder. The map compares paths as texts; `add`
/// and `remove` compare them as files, so that another spelling of a folder means the same project.
class QRV_COMMON_EXPORT ConfigData {
public:
    const std::map<OdString, ProjectInfo>& read() const { return projects_; }
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
