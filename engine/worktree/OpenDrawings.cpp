#include <engine/worktree/OpenDrawings.h>

namespace qrv {

std::optional<OdString> lockBeside(const OdString& path, const WorkingTree& workingTree) {
    const int point = path.reverseFind(L'.');
    if (point < 0 || path.mid(point).iCompare(L".dwg") != 0)
        return std::nullopt;
    for (const wchar_t* const ending : {L".dwl", L".dwl2", L".DWL", L".DWL2"}) {
        const OdString lock = path.left(point) + ending;
        if (workingTree.folder().status(lock.toNarrow()))
            return lock;
    }
    return std::nullopt;
}

}  // namespace qrv
