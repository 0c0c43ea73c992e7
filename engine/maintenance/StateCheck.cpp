#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/ReferenceName.h>
#include <engine/maintenance/StateCheck.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/RelativePath.h>

#include <set>

namespace qrv {

namespace {

class Check {
public:
    explicit Check(const common::State& state) : state_(state) {}

    std::vector<OdString> run() {
        addFailure(checkedReferenceName(state_.head.reference));
        checkStaged();
        for (const auto& [path, previous] : state_.renames) {
            addFailure(RelativePath::check(path));
            addFailure(RelativePath::check(previous));
        }
        checkConflicts();
        checkIndex();
        return std::move(problems_);
    }

private:
    void add(const OdString& cause) {
        problems_.push_back(OdString::format(tr(L"The state is damaged: %ls"), cause));
    }

    template <class Checked>
    void addFailure(const Expected<Checked>& checked) {
        if (!checked)
            add(checked.error().message);
    }

    void checkStaged() {
        std::set<OdString> paths;
        for (const common::StagedFile& file : state_.stagedFiles) {
            addFailure(RelativePath::check(file.path));
            if (!paths.insert(file.path).second)
                add(OdString::format(tr(L"'%ls' is staged twice"), printable(file.path)));
        }
    }

    void checkConflicts() {
        std::set<OdString> paths;
        for (const common::ConflictData& conflict : state_.conflicts) {
            addFailure(RelativePath::check(conflict.path));
            if (!conflict.remoteUrl.isEmpty())
                addFailure(CheckedUrl::check(conflict.remoteUrl));
            if (!paths.insert(conflict.path).second)
                add(OdString::format(tr(L"'%ls' is in conflict twice"), printable(conflict.path)));
        }
    }

    // Only files of HEAD have entries, and all paths of HEAD are safe.
    void checkIndex() {
        for (const auto& [path, entry] : state_.index) {
            addFailure(RelativePath::check(path));
            if (entry.lastChecked < 0)
                add(OdString::format(tr(L"the time of '%ls' cannot be"), printable(path)));
        }
    }

    const common::State& state_;
    std::vector<OdString> problems_;
};

}  // namespace

std::vector<OdString> problemsOf(const common::State& state) {
    return Check(state).run();
}

bool isStateOfHistory(const common::State& state, History& history) {
    const OdString commit =
        history.reference(state.head.reference, common::RefType::Branch).value_or(OdString());
    return commit == history.note(headNote);
}

}  // namespace qrv
