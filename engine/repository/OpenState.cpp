#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/repository/MetadataCheck.h>
#include <engine/repository/OpenState.h>
#include <engine/repository/StateDepth.h>

#include <stdexcept>

namespace qrv {

Expected<std::shared_ptr<common::Cache>> openState(const common::RootPath& root,
                                                   const sys::Folder& folder, const Host& host) {
    if (Expected<void> depth = checkStateDepth(root); !depth)
        return std::move(depth).error();
    try {
        Expected<std::shared_ptr<common::Cache>> cache = common::Cache::get(root, host);
        if (const Expected<void> checked = checkMetadata(folder, root.path()); !checked)
            return checked.error();
        return cache;
    } catch (const std::length_error&) {
        return ErrorMessage{OdString::format(
            tr(L"The state file '%ls' ends in the middle of a text"), printable(root.statePath()))};
    }
}

}  // namespace qrv
