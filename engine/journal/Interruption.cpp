#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/journal/Interruption.h>
#include <engine/journal/Recovery.h>
#include <engine/journal/RecoveryCheck.h>
#include <engine/tree/FileDelta.h>

#include <optional>

namespace qrv {

namespace {

OdString noteOf(const Plan& plan, bool isBusy) {
    const OdString title = printable(plan.title);
    if (isBusy)
        return OdString::format(
            tr(L"Note: '%ls' was interrupted, or is being done now by another process"), title);
    const bool finishes = plan.recovery == Plan::Recovery::finish;
    return OdString::format(
        finishes ? tr(L"Note: '%ls' was interrupted; qrv recover finishes it, and so does the next "
                      L"command that changes something")
                 : tr(L"Note: '%ls' was interrupted; qrv recover takes it back, and so does the "
                      L"next command that changes something"),
        title);
}

}  // namespace

void tellInterruption(WorkingTree& workingTree) {
    if (!notedPlan(workingTree.repository().history()))
        return;
    // Whoever is at work holds the lock, and may have finished meanwhile.
    const bool isBusy = workingTree.repository().isLockedByOther();
    if (const std::optional<Plan> plan = notedPlan(workingTree.repository().history()))
        workingTree.caller().note(noteOf(*plan, isBusy));
}

Expected<void> settleInterruption(WorkingTree& workingTree) {
    const std::optional<Plan> plan = notedPlan(workingTree.repository().history());
    if (!plan)
        return {};
    if (const Expected<void> checked = checkNotedPlan(workingTree, *plan); !checked)
        return ErrorMessage{OdString::format(
            tr(L"'%ls' was interrupted, and what it left to do cannot be: %ls (qrv recover "
               L"--forget leaves the files as they are)"),
            printable(plan->title), checked.error().message)};
    return recover(workingTree);
}

void forgetInterruption(WorkingTree& workingTree) {
    History& history = workingTree.repository().history();
    DatabaseTransaction transaction(history.database());
    forgetPlan(history);
    const OdString head = workingTree.repository().headCommit();
    if (history.note(headNote) != head) {
        history.changeHeadFiles(deltasBetween(history.headFiles(), history.tree(head)));
        history.setNote(headNote, head);
    }
    transaction.commit();
    workingTree.repository().forgetHeadFiles();
}

}  // namespace qrv
