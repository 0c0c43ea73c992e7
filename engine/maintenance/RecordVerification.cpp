#include <engine/base/Translation.h>
#include <engine/history/HistoryRecords.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/maintenance/RecordVerification.h>
#include <engine/paths/Layout.h>

#include <optional>

namespace qrv {

namespace {

/// Of the commits below that number.
void verifyCommitRecords(History& history, std::int64_t firstUnrecorded, const sys::Folder& folder,
                         Findings& findings) {
    for (const std::int64_t number : commitNumbers(history)) {
        const std::optional<CommitEntry> entry = history.commitByNumber(number);
        if (!entry || number >= firstUnrecorded)
            continue;
        if (const Expected<NewCommit> commit = recordedCommit(entry->hash, folder); !commit)
            findings.addProblem(OdString::format(tr(L"The record of commit %i is lost: %ls"),
                                                 number, commit.error().message));
    }
}

}  // namespace

void verifyRecords(History& history, const sys::Folder& folder, Findings& findings) {
    const Expected<ReferenceRecord> record = ReferenceRecord::read(folder);
    if (!record)
        return findings.addProblem(record.error().message);
    if (record->damagedLine() > 0)
        findings.addProblem(OdString::format(tr(L"'%ls' is damaged in line %i"),
                                             OdString(layout::referenceRecordPath),
                                             record->damagedLine()));
    if (const Expected<void> notOlder = checkNotOlder(*record, history); !notOlder)
        findings.addProblem(notOlder.error().message);
    // A process that was killed before it recorded its commit has not recorded its branch.
    if (stateOf(*record, history) != RecordState::same)
        return;
    // One that merges moves its branch when the working files are done.
    const std::int64_t firstUnrecorded = firstUnrecordedCommit(history, folder);
    if (firstUnrecorded <= history.lastNumber())
        findings.addNote(
            OdString::format(tr(L"The newest commits, from %i on, are recorded by the next "
                                L"command that changes something"),
                             firstUnrecorded));
    verifyCommitRecords(history, firstUnrecorded, folder, findings);
}

}  // namespace qrv
