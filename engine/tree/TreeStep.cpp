#include <engine/tree/Difference.h>
#include <engine/tree/TreeStep.h>

namespace qrv {

std::vector<TreeStep> stepsBetween(const Tree& before, const Tree& after) {
    std::vector<TreeStep> steps;
    visitDifferences(before, after,
                     [&](const auto& path, const TreeFile* old, const TreeFile* file) {
                         TreeStep& step = steps.emplace_back(TreeStep{path, {}, {}, 0});
                         if (old != nullptr)
                             step.before = old->contents;
                         if (file != nullptr) {
                             step.after = file->contents;
                             step.sizeBytes = file->sizeBytes;
                         }
                     });
    return steps;
}

}  // namespace qrv
