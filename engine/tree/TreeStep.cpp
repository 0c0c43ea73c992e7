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

std::vector<OdString> pathsOf(const std::vector<TreeStep>& steps) {
    std::vector<OdString> paths;
    paths.reserve(steps.size());
    for (const TreeStep& step : steps)
        paths.push_back(step.path);
    return paths;
}

}  // namespace qrv
