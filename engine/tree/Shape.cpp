#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/tree/Shape.h>

#include <set>

namespace qrv {

Expected<void> checkShape(const Tree& tree, const std::vector<FileDelta>& deltas) {
    std::set<OdString> removed;
    for (const FileDelta& delta : deltas) {
        if (delta.url.isEmpty())
            removed.insert(delta.path);
    }
    const auto isRemoved = [&removed](const OdString& path) { return removed.contains(path); };
    for (const FileDelta& delta : deltas) {
        const OdString other =
            delta.url.isEmpty() ? OdString() : fileInTheWay(delta.path, tree, isRemoved);
        if (!other.isEmpty())
            return ErrorMessage{OdString::format(
                tr(L"'%ls' and '%ls' cannot be in one commit: one is a file where the other needs "
                   L"a folder"),
                printable(delta.path), printable(other))};
    }
    return {};
}

}  // namespace qrv
