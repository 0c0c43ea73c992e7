#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/journal/RecoveryCheck.h>
#include <engine/tree/TreeFile.h>

namespace qrv {

namespace {

class Check {
public:
    Check(WorkingTree& workingTree, const JournalEntry& entry)
        : workingTree_(workingTree), entry_(entry), history_(workingTree.repository().history()) {}

    Expected<void> run() {
        if (!entry_.commit.isEmpty() && !history_.commit(entry_.commit))
            return ErrorMessage{
                OdString::format(tr(L"there is no commit '%ls'"), printable(entry_.commit))};
        // Afterwards the files of HEAD say nothing about those that are replaced.
        isHeadMoved_ = history_.note(headNote) == entry_.commit;
        for (const TreeStep& step : entry_.steps) {
            if (Expected<void> checked = checkStep(step); !checked)
                return checked;
        }
        return {};
    }

private:
    Expected<void> checkStep(const TreeStep& step) {
        const bool finishes = entry_.recovery == JournalEntry::Recovery::finish;
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
        if (entry_.branch.isEmpty())
            return wanted.isEmpty() || history_.hasVersion(path, wanted);
        if (history_.fileAt(entry_.commit, path).value_or(TreeFile()).contents != wanted)
            return false;
        return isHeadMoved_ || history_.headUrl(path) == replaced;
    }

    Expected<void> checkKept(const OdString& path, const OdString& url) {
        if (url.isEmpty())
            return {};
        const Expected<bool> isKept =
            workingTree_.repository().storages().ofUrl(url).contains(workingTree_.root(), url);
        if (!isKept)
            return isKept.error();
        if (*isKept)
            return {};
        return ErrorMessage{
            OdString::format(tr(L"'%ls' is missing in the storage"), printable(path))};
    }

    WorkingTree& workingTree_;
    const JournalEntry& entry_;
    History& history_;
    bool isHeadMoved_ = false;
};

}  // namespace

Expected<void> checkNotedEntry(WorkingTree& workingTree, const JournalEntry& entry) {
    return Check(workingTree, entry).run();
}

}  // namespace qrv
