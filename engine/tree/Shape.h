#pragma once

#include <common/base/Expected.h>
#include <engine/tree/FileDelta.h>
#include <engine/tree/Tree.h>
#include <platform/kernel/OdString.h>

#include <algorithm>
#include <vector>

namespace qrv {

// No disk can hold a file and, below its name, another one.

/// The first of the files, ordered by path, whose path is not less than this one.
inline auto firstFrom(const Tree& files, const OdString& path) {
    return files.lower_bound(path);
}
inline auto firstFrom(const std::vector<OdString>& files, const OdString& path) {
    return std::lower_bound(files.begin(), files.end(), path);
}

inline const OdString& pathOf(const OdString& path) {
    return path;
}
inline const OdString& pathOf(const Tree::value_type& file) {
    return file.first;
}

/// The path of a file that lies where a file of the path `path` needs a folder, or below its name;
/// empty when there is none. `files` are ordered by path; one of which `isGone(path)` is true does
/// not count.
template <class Files, class IsGone>
OdString fileInTheWay(const OdString& path, const Files& files, const IsGone& isGone) {
    for (int slash = path.find(L'/'); slash >= 0; slash = path.find(L'/', slash + 1)) {
        OdString folder = path.left(slash);
        const auto file = firstFrom(files, folder);
        if (file != files.end() && pathOf(*file) == folder && !isGone(folder))
            return folder;
    }
    const OdString below = path + L'/';
    for (auto file = firstFrom(files, below); file != files.end(); ++file) {
        if (pathOf(*file).left(below.getLength()) != below)
            break;
        if (!isGone(pathOf(*file)))
            return pathOf(*file);
    }
    return {};
}

/// Fails when `tree` with `deltas` would hold a file and, below its name, another one. A person
/// makes such a tree who stages the file that took the place of a folder, but not that the files of
/// the folder are gone.
Expected<void> checkShape(const Tree& tree, const std::vector<FileDelta>& deltas);

}  // namespace qrv
