#include <engine/paths/PathParts.h>

#include <algorithm>

namespace qrv {

OdString parentOf(const OdString& path) {
    const int slash = path.reverseFind(L'/');
    return slash < 0 ? OdString() : path.left(slash);
}

OdString folderOf(const OdString& path) {
    const OdString parent = parentOf(path);
    return parent.isEmpty() ? OdString(L".") : parent;
}

OdString nameOf(const OdString& path) {
    return path.mid(path.reverseFind(L'/') + 1);
}

bool isChosen(const OdString& path, const std::vector<OdString>& chosen) {
    return std::any_of(chosen.begin(), chosen.end(), [&path](const OdString& choice) {
        if (choice.isEmpty() || choice == path)
            return true;
        const OdString folder = choice + L'/';
        return path.left(folder.getLength()) == folder;
    });
}

}  // namespace qrv
