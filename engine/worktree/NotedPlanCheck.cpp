#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/tree/Tree.h>
#include <engine/worktree/NotedPlanCheck.h>

namespace qrv {

namespace {

class Check {
public:
    Check(Workspace& workspace, const Plan& plan) : workspace_(workspace), plan_(plan) {}

    Expected<void> run() {
        if (!plan_.commit.isEmpty() && !workspace_.history().commit(plan_.commit))
            return ErrorMessage{
                OdString::format(tr(L"there is no commit '%ls'"), printable(plan_.commit))};
        if (!plan_.branch.isEmpty())
            target_ = workspace_.history().tree(plan_.commit);
        // Afterwards the files of HEAD say nothing about those that are replaced.
        isHeadMoved_ = workspace_.history().note(headNote) == plan_.commit;
        for (const PlannedFile& step : plan_.files) {
            if (Expected<void> checked = checkStep(step); !checked)
                return checked;
        }
        return {};
    }

private:
    Expected<void> checkStep(const PlannedFile& step) {
        const bool finishes = plan_.recovery == Plan::Recovery::finish;
        const OdString& wanted = finishes ? step.after : step.before;
        const OdString& replaced = finishes ? step.before : step.after;
        if (!isPossible(step.path, wanted, replaced))
            return ErrorMessage{OdString::format(
                tr(L"'%ls' would become a file that no commit has there"), printable(step.path))};
        for (const OdString& url : {wanted, replaced}) {
            if (Expected<void> kept = checkKept(step.path, url); !kept)
                return kept;
        }
        return {};
    }

    bool isPossible(const OdString& path, const OdString& wanted, const OdString& replaced) {
        if (plan_.branch.isEmpty())
            return wanted.isEmpty() || workspace_.history().hasVersion(path, wanted);
        if (urlIn(target_, path) != wanted)
            return false;
        return isHeadMoved_ || urlIn(workspace_.headFiles(), path) == replaced;
    }

    Expected<void> checkKept(const OdString& path, const OdString& url) {
        if (url.isEmpty())
            return {};
        const Expected<bool> isKept =
            workspace_.storages().ofUrl(url).contains(workspace_.root(), url);
        if (!isKept)
            return isKept.error();
        if (*isKept)
            return {};
        return ErrorMessage{
            OdString::format(tr(L"'%ls' is missing in the storage"), printable(path))};
    }

    Workspace& workspace_;
    const Plan& plan_;
    Tree target_;
    bool isHeadMoved_ = false;
};

}  // namespace

Expected<void> checkNotedPlan(Workspace& workspace, const Plan& plan) {
    return Check(workspace, plan).run();
}

}  // namespace qrv
