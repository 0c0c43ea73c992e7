#include <engine/journal/Interruption.h>
#include <engine/journal/OpenTree.h>

namespace qrv {

Expected<std::unique_ptr<WorkingTree>> openTree(const std::string& folder, Repository::Use use,
                                                Caller& caller, WorkingTree::Scan scan) {
    Expected<std::unique_ptr<WorkingTree>> workingTree =
        WorkingTree::open(folder, use, caller, scan);
    if (!workingTree)
        return workingTree;
    if (use != Repository::Use::change) {
        tellInterruption(**workingTree);
        return workingTree;
    }
    if (const Expected<void> settled = settleInterruption(**workingTree); !settled)
        return settled.error();
    return workingTree;
}

}  // namespace qrv
