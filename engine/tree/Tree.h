#pragma once

#include <engine/paths/RelativePath.h>
#include <engine/tree/TreeFile.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <functional>
#include <map>

namespace qrv {

/// A file without its contents, in a tree or on a disk, where names are not checked.
struct SizedFile {
    OdString path;
    std::int64_t sizeBytes = 0;
};

/// Files by their paths: those of a commit, or of HEAD. It can be asked for a text, too.
using Tree = std::map<RelativePath, TreeFile, std::less<>>;

/// The file of that path; null when there is none.
const TreeFile* fileIn(const Tree& tree, const OdString& path);

/// The URL of the file of that path; empty when there is none.
OdString urlIn(const Tree& tree, const OdString& path);

}  // namespace qrv
