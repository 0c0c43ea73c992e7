#pragma once

#include <common/base/Expected.h>
#include <engine/history/Commit.h>
#include <engine/history/History.h>
#include <engine/history/ReferenceRecord.h>
#include <sys/Folder.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace qrv {

// Beside the history lies what it can be made from anew: the record of its references, and the
// record of each commit in a file of its own, named by the commit's hash, below ".qrv/commits". The
// records follow the history: a change is written to the history first, and whoever is killed
// before it is recorded leaves that to the next change.

/// Where the branches and tags of the history point.
ReferenceMap referencesOf(History& history);

/// How the record of references stands to the history.
enum class RecordState {
    same,
    behind,  ///< the last change is not recorded yet, or none is
    ahead,   ///< the history is older than the record, or its references were lost
};
RecordState stateOf(const ReferenceRecord& record, History& history);

/// Fails when the history is older than the record: what was recorded would be lost with the next
/// change.
Expected<void> checkNotOlder(const ReferenceRecord& record, History& history);

/// The record beside the history, of which no more than the end is read as long as that leads where
/// the references of the history point. Fails when it cannot be read, and like `checkNotOlder`.
Expected<ReferenceRecord> checkedRecord(History& history, const sys::Folder& root);

/// Records what the history has and the records lack: commits from number `firstNumber` on, then
/// the references. Everything is on the disk when this returns. May throw `DatabaseError`.
Expected<void> updateRecords(ReferenceRecord& record, std::int64_t firstNumber,
                             const std::string& command, History& history, const sys::Folder& root);

/// The number of the first of the newest commits that are not recorded: one behind the last when
/// all are. A process that is killed between adding a commit and recording it leaves such.
/// A record that cannot be asked for counts as one.
std::int64_t firstUnrecordedCommit(History& history, const sys::Folder& root);

/// The hashes of the commits that are recorded.
Expected<std::set<OdString>> recordedCommits(const sys::Folder& root);

/// The recorded commit of that hash, with sizes of 0. Fails when there is none, or it is damaged.
Expected<NewCommit> recordedCommit(const OdString& hash, const sys::Folder& root);

}  // namespace qrv
