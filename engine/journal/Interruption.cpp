#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/journal/Interruption.h>
#include <engine/journal/Recovery.h>
#include <engine/journal/RecoveryCheck.h>
#include <engine/tree/FileDelta.h>

#include <optional>

namespace qrv {

namespace {

OdString noteOf(const JournalEntry& entry, bool isBusy) {
    const OdString title = printable(entry.title);
    if (isBusy)
        return OdString::format(
            tr(L"Note: '%ls' was interrupted, or is being done now by another process"), title);
    const bool finishes = entry.recovery == JournalEntry::Recovery::finish;
    return OdString::format(
        finishes ? tr(L"Note: '%ls' was interrupted; qrv recover finishes it, and so does the next "
                      L"command that changes something")
                 : tr(L"Note: '%ls' was interrupted; qrv recover takes it back, and so does the "
                      L"next command that changes something"),
        title);
}

}  // namespace

void tellInterruption(WorkingTree& workingTree) {
    if (!notedEntry(workingTree.repository().history()))
        return;
    // Whoever is at work holds the lock, and may have finished meanwhile.
    const bool isBusy = workingTree.repository().isLockedByOther();
    if (const std::optional<JournalEntry> entry = notedEntry(workingTree.repository().history()))
        workingTree.caller().note(noteOf(*entry, isBusy));
}

Expected<void> settleInterruption(WorkingTree& workingTree) {
    const std::optional<JournalEntry> entry = notedEntry(workingTree.repository().history());
    if (!entry)
        return {};
    if (const Expected<void> checked = checkNotedEntry(workingTree, *entry); !checked)
        return ErrorMessage{OdString::format(
            tr(L"'%ls' was interrupted, and what it left to do cannot be: %ls (qrv recover "
               L"--forget leaves the files as they are)"),
            printable(entry->title), checked.error().message)};
    return recover(workingTree);
}

void forgetInterruption(WorkingTree& workingTree) {
    History& history = workingTree.repository().history();
    DatabaseTransaction transaction(history.database());
    forgetEntry(history);
    const OdString head = workingTree.repository().headCommit();
    if (const OdString before = history.note(headNote); before != head) {
        history.changeHeadFiles(deltasOf(history.difference(before, head)));
        history.setNote(headNote, head);
    }
    transaction.commit();
    workingTree.repository().forgetHeadFiles();
}

}  // namespace qrv
