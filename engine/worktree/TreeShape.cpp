#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/worktree/TreeShape.h>

#include <set>

namespace qrv {

namespace {

/// The files of the tree that the deltas leave where they are.
class Staying {
public:
    Staying(const Tree& tree, const std::vector<FileDelta>& deltas) : tree_(tree) {
        for (const FileDelta& delta : deltas) {
            if (delta.url.isEmpty())
                removed_.insert(delta.path);
        }
    }

    /// One that lies where `path` needs a folder, or below its name; empty when there is none.
    OdString inTheWayOf(const OdString& path) const {
        for (int slash = path.find(L'/'); slash >= 0; slash = path.find(L'/', slash + 1)) {
            OdString folder = path.left(slash);
            if (tree_.contains(folder) && !removed_.contains(folder))
                return folder;
        }
        const OdString below = path + L'/';
        for (auto file = tree_.lower_bound(below); file != tree_.end(); ++file) {
            if (file->first.left(below.getLength()) != below)
                break;
            if (!removed_.contains(file->first))
                return file->first;
        }
        return {};
    }

private:
    const Tree& tree_;
    std::set<OdString> removed_;
};

}  // namespace

Expected<void> checkShape(const Tree& tree, const std::vector<FileDelta>& deltas) {
    const Staying staying(tree, deltas);
    for (const FileDelta& delta : deltas) {
        const OdString other = delta.url.isEmpty() ? OdString() : staying.inTheWayOf(delta.path);
        if (!other.isEmpty())
            return ErrorMessage{OdString::format(
                tr(L"'%ls' and '%ls' cannot be in one commit: one is a file where the other needs "
                   L"a folder"),
                printable(delta.path), printable(other))};
    }
    return {};
}

}  // namespace qrv
