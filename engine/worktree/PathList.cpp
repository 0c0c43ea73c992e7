#include <engine/base/Printable.h>
#include <engine/worktree/PathList.h>

namespace qrv {

ErrorMessage withPaths(const OdString& heading, const std::vector<OdString>& paths) {
    OdString list;
    for (const OdString& path : paths)
        list += L"\n  " + printable(path);
    return {heading + list};
}

}  // namespace qrv
