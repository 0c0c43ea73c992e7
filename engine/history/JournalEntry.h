#pragma once

#include <engine/history/History.h>
#include <engine/tree/TreeStep.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <vector>

namespace qrv {

/// An entry of the journal: what a command that touches several working files is about to do, noted
/// in the history before the first of them is touched and forgotten after the last. Who finds one
/// finishes it, or rolls it back.
struct JournalEntry {
    /// What an interruption leads to.
    enum class Recovery {
        finish = 0,    ///< the rest is done
        rollBack = 1,  ///< what was done is undone
    };

    /// What the person had asked for, for the message: "switch to 'side'".
    OdString title;
    Recovery recovery = Recovery::finish;
    /// The branch that HEAD names when all is done; empty when HEAD stays as it is.
    OdString branch;
    /// The commit that this branch and the files of HEAD then stand for; empty without a branch,
    /// and for a branch that has no commit yet.
    OdString commit;
    /// Each working file before and after, in the order in which they are noted.
    std::vector<TreeStep> steps;

    friend bool operator==(const JournalEntry&, const JournalEntry&) = default;
};

/// The steps from the files of HEAD to those of the commit.
std::vector<TreeStep> stepsFromHead(History& history, const OdString& commit);

/// The way back.
JournalEntry reversed(JournalEntry entry);

/// All three throw `DatabaseError`, like all of the history. There is at most one entry; noting
/// another one replaces it.
std::optional<JournalEntry> notedEntry(History& history);
void noteEntry(History& history, const JournalEntry& entry);
void forgetEntry(History& history);

}  // namespace qrv
