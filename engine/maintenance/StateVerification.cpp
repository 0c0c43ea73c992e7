#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/JournalEntry.h>
#include <engine/maintenance/StateCheck.h>
#include <engine/maintenance/StateVerification.h>
#include <engine/paths/Layout.h>
#include <engine/repository/OpenState.h>
#include <engine/worktree/KeptBaseline.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qrv {

namespace {

/// The files of HEAD as a baseline has them that was made now.
Baseline baselineOf(History& history) {
    BaselineBuilder builder;
    history.visitHeadFiles([&builder](const HeadFile& file) {
        KnownFile known;
        known.sizeBytes = file.file.sizeBytes;
        if (file.stamp)
            known.note(*file.stamp);
        builder.add(file.path.bytes(), known);
    });
    return builder.build();
}

/// Leaves out what has changed since it was kept.
void leaveOut(const std::vector<RelativePath>& paths, Baseline& baseline) {
    std::map<std::string, std::optional<KnownFile>> gone;
    for (const RelativePath& path : paths)
        gone.emplace(path.bytes(), std::nullopt);
    baseline.change(std::move(gone));
}

/// Nothing is lost with it, but a disk that damaged it damages other files, too.
void checkBaseline(const sys::Folder& folder, History& history, bool isBusy, Findings& findings) {
    const Expected<std::optional<KeptBaseline>> kept = readBaseline(folder);
    if (!kept)
        return findings.addProblem(kept.error().message);
    if (isBusy || !*kept)
        return;
    const auto changed = history.headChangesAfter((*kept)->last);
    // An old one is not used.
    if (!changed)
        return;
    Baseline expected = baselineOf(history);
    leaveOut(*changed, expected);
    leaveOut(*changed, *(*kept)->baseline);
    if (toBytes((*kept)->last, *(*kept)->baseline) != toBytes((*kept)->last, expected))
        findings.addProblem(damagedBaseline().message);
}

void compareWithHistory(const common::State& state, History& history, bool isBusy,
                        Findings& findings) {
    const std::optional<JournalEntry> entry = notedEntry(history);
    if (entry)
        findings.addNote(
            OdString::format(tr(L"'%ls' was interrupted, or is being done now by another process"),
                             printable(entry->title)));
    else if (!isBusy && !isStateOfHistory(state, history))
        findings.addProblem(
            OdString::format(tr(L"The state is damaged: it names the branch '%ls', but "
                                L"the files of HEAD are not those of that branch"),
                             printable(state.head.reference)));
}

}  // namespace

void verifyState(const RepositoryPlace& place, History* history, bool isBusy, Findings& findings) {
    const sys::Outcome<sys::FileStatus> status = place.folder.status(layout::statePath);
    const bool isMissing = !status && status.error() == std::errc::no_such_file_or_directory;
    if (isMissing && history != nullptr && findings.counts().commits == 0)
        return findings.addNote(tr(L"There is no state file yet (qrv init makes it)"));
    const Host host;
    const Expected<std::shared_ptr<common::Cache>> cache =
        openState(place.root, place.folder, host);
    if (!cache)
        return findings.addProblem(cache.error().message);
    const common::State& state = (*cache)->read();
    for (const OdString& problem : problemsOf(state))
        findings.addProblem(problem);
    if (history == nullptr)
        return;
    findings.attempt([&] { compareWithHistory(state, *history, isBusy, findings); });
    findings.attempt([&] { checkBaseline(place.folder, *history, isBusy, findings); });
}

}  // namespace qrv
