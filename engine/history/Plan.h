#pragma once

#include <engine/history/History.h>
#include <engine/tree/TreeStep.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <vector>

namespace qrv {

/// One step of a plan.
using PlannedFile = TreeStep;

/// What a command that touches several working files is about to do, noted in the history before
/// the first of them is touched and forgotten after the last: who finds one finishes it.
struct Plan {
    /// What an interruption leads to.
    enum class Recovery {
        finish = 0,    ///< the rest is done
        takeBack = 1,  ///< what was done is undone
    };

    /// What the person had asked for, for the message: "switch to 'side'".
    OdString title;
    Recovery recovery = Recovery::finish;
    /// The branch that HEAD names when all is done; empty when HEAD stays as it is.
    OdString branch;
    /// The commit that this branch and the files of HEAD then stand for; empty without a branch,
    /// and for a branch that has no commit yet.
    OdString commit;
    std::vector<PlannedFile> files;

    friend bool operator==(const Plan&, const Plan&) = default;
};

/// The way back.
Plan reversed(Plan plan);

/// All three throw `DatabaseError`, like all of the history. There is at most one plan; noting
/// another one replaces it.
std::optional<Plan> notedPlan(History& history);
void notePlan(History& history, const Plan& plan);
void forgetPlan(History& history);

}  // namespace qrv
