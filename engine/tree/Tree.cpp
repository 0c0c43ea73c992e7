#include <engine/tree/Tree.h>

namespace qrv {

const TreeFile* fileIn(const Tree& tree, const OdString& path) {
    const auto file = tree.find(path);
    return file == tree.end() ? nullptr : &file->second;
}

OdString urlIn(const Tree& tree, const OdString& path) {
    const TreeFile* const file = fileIn(tree, path);
    return file == nullptr ? OdString() : file->contents;
}

}  // namespace qrv
