#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/History.h>
#include <engine/history/HistoryCheck.h>
#include <engine/maintenance/Findings.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/maintenance/RecordVerification.h>
#include <engine/maintenance/StateVerification.h>
#include <engine/maintenance/StoredVersionsCheck.h>
#include <engine/maintenance/VerifyRepository.h>
#include <engine/paths/Layout.h>
#include <engine/repository/HistoryTraces.h>
#include <engine/repository/MetadataFiles.h>
#include <engine/repository/RepositoryLock.h>
#include <sys/FileStamp.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace qrv {

namespace {

/// A repository in which somebody goes on changing things is looked at so often.
constexpr int mostLooks = 4;

/// A process that was killed in a commit may have left hundreds.
void noteLeftovers(const std::vector<MetadataFile>& leftovers, Findings& findings) {
    if (leftovers.empty())
        return;
    const OdString first = printable(leftovers.front().name);
    findings.addNote(leftovers.size() == 1
                         ? OdString::format(tr(L"'%ls' was left by an interrupted command (qrv gc "
                                               L"removes it after a day)"),
                                            first)
                         : OdString::format(tr(L"%i files, such as '%ls', were left by interrupted "
                                               L"commands (qrv gc removes them after a day)"),
                                            leftovers.size(), first));
}

void noteFiles(const MetadataFiles& files, Findings& findings) {
    noteLeftovers(files.leftovers, findings);
    for (const OdString& stray : files.strays)
        findings.addNote(
            OdString::format(tr(L"'%ls' is nothing that belongs there"), printable(stray)));
}

/// The history, as far as it can be opened, and what it names.
struct OpenedHistory {
    std::optional<History> history;
    NamedVersions named;
};

/// The history, the state and the records of the history.
OpenedHistory verifyHistory(const RepositoryPlace& place, bool isBusy, Findings& findings) {
    const Expected<void> isThere = checkHistoryIsThere(place.root, place.folder);
    if (!isThere)
        findings.addProblem(isThere.error().message);
    OpenedHistory opened;
    std::optional<History>& history = opened.history;
    findings.attempt([&] {
        history.emplace(History::open(place.folder, place.root, Database::Access::readOnly));
        for (const OdString& problem : problemsOf(*history))
            findings.addProblem(problem);
        opened.named =
            namedVersions(*history, [&](const OdString& error) { findings.addProblem(error); });
        findings.counts().commits = static_cast<std::int64_t>(commitNumbers(*history).size());
    });
    verifyState(place, history ? &*history : nullptr, isBusy, findings);
    if (history && isThere)
        findings.attempt([&] { verifyRecords(*history, place.folder, findings); });
    return opened;
}

Verification verifyOnce(const RepositoryPlace& place, CheckDepth depth, Caller& caller) {
    Findings findings;
    // Nobody knows before how many drawing versions there are.
    const std::unique_ptr<Work> progress = caller.beginWork(tr(L"Checking"), 0);
    // Whoever reads keeps nobody from writing: the lock is not taken.
    const bool isBusy = isLocked(place.folder);
    if (isBusy)
        findings.addNote(tr(L"Another process is changing the repository now"));
    const Expected<MetadataFiles> files = listMetadata(place.root, place.folder);
    if (!files)
        findings.addProblem(files.error().message);
    const MetadataFiles listed = files ? *files : MetadataFiles();
    OpenedHistory opened = verifyHistory(place, isBusy, findings);
    StoredVersionsCheck stored(place, opened.named, depth, *progress, findings);
    stored.checkAll(listed);
    stored.tellDamage(opened.history ? &*opened.history : nullptr);
    noteFiles(listed, findings);
    return findings.take();
}

/// What somebody changes who changes the repository.
std::vector<std::optional<sys::FileStamp>> stampsOf(const sys::Folder& folder) {
    std::vector<std::optional<sys::FileStamp>> stamps;
    for (const char* const path :
         {layout::historyPath, layout::statePath, layout::referenceRecordPath, layout::packsFolder,
          layout::objectsFolder, layout::oldPackPath, layout::storesFolder}) {
        const sys::Outcome<sys::FileStamp> stamp = folder.stamp(path);
        stamps.push_back(stamp ? std::optional(*stamp) : std::nullopt);
    }
    return stamps;
}

/// Those that are in both.
std::vector<OdString> inBoth(const std::vector<OdString>& ones,
                             const std::vector<OdString>& others) {
    std::vector<OdString> both;
    for (const OdString& one : ones) {
        if (std::find(others.begin(), others.end(), one) != others.end())
            both.push_back(one);
    }
    return both;
}

}  // namespace

// What another process moves from one place to another while this one looks is found in neither.
// So damage is what every look finds, unless nobody changed anything during one.
Verification verifyRepository(const RepositoryPlace& place, CheckDepth depth, Caller& caller) {
    Verification found;
    for (int look = 0; look < mostLooks; ++look) {
        const auto before = stampsOf(place.folder);
        Verification now = verifyOnce(place, depth, caller);
        const bool isQuiet = stampsOf(place.folder) == before;
        if (look > 0 && !isQuiet)
            now.problems = inBoth(found.problems, now.problems);
        found = std::move(now);
        if (isQuiet || found.problems.empty())
            break;
    }
    return found;
}

}  // namespace qrv
