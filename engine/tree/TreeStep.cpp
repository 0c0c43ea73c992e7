#include <engine/tree/TreeStep.h>

namespace qrv {

std::vector<TreeStep> stepsOf(const std::vector<TreeChange>& changes) {
    std::vector<TreeStep> steps;
    steps.reserve(changes.size());
    for (const TreeChange& change : changes) {
        TreeStep& step = steps.emplace_back(TreeStep{change.path, {}, {}, 0});
        if (change.before)
            step.before = change.before->contents;
        if (change.after) {
            step.after = change.after->contents;
            step.sizeBytes = change.after->sizeBytes;
        }
    }
    return steps;
}

}  // namespace qrv
