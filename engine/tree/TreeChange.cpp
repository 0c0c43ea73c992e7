#include <engine/tree/Difference.h>
#include <engine/tree/TreeChange.h>

namespace qrv {

namespace {

std::optional<TreeFile> sideOf(const TreeFile* file) {
    return file == nullptr ? std::nullopt : std::optional(*file);
}

}  // namespace

std::vector<TreeChange> changesBetween(const Tree& before, const Tree& after) {
    std::vector<TreeChange> changes;
    visitDifferences(before, after,
                     [&](const auto& path, const TreeFile* old, const TreeFile* file) {
                         changes.push_back({path, sideOf(old), sideOf(file)});
                     });
    return changes;
}

}  // namespace qrv
