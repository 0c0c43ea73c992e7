#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/history/History.h>
#include <engine/history/HistoryCheck.h>
#include <engine/history/HistoryRecords.h>
#include <engine/history/Plan.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/maintenance/StateCheck.h>
#include <engine/maintenance/Verification.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/Layout.h>
#include <engine/repository/HistoryTraces.h>
#include <engine/repository/MetadataFiles.h>
#include <engine/repository/OpenState.h>
#include <engine/repository/RepositoryLock.h>
#include <engine/storage/DrawingStorage.h>
#include <engine/storage/PackFile.h>
#include <engine/storage/ReadToEnd.h>
#include <engine/storage/StorageMessages.h>
#include <engine/storage/Storages.h>
#include <engine/worktree/KeptBaseline.h>
#include <platform/ut/Paths.h>
#include <sys/Folder.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace qrv {

namespace {

/// A repository in which somebody goes on changing things is looked at so often.
constexpr int mostLooks = 4;

class Check {
public:
    Check(const common::RootPath& root, sys::Folder folder, Caller& caller)
        : root_(root),
          folder_(std::move(folder)),
          storages_([](const OdString&) { return OdString(); }),
          progress_(caller.beginWork(tr(L"Checking"), 0)) {
        storages_.use(root_, folder_);
    }

    Verification run() {
        isBusy_ = isLocked(folder_);
        if (isBusy_)
            addNote(tr(L"Another process is changing the repository now"));
        const Expected<MetadataFiles> files = listMetadata(root_, folder_);
        if (!files)
            addProblem(files.error().message);
        const MetadataFiles listed = files ? *files : MetadataFiles();
        checkTraces();
        attempt([this] { checkHistory(); });
        checkState();
        if (history_ && !isLost_)
            attempt([this] { checkRecords(*history_); });
        history_.reset();
        checkObjects(listed);
        attempt([this] { checkPack(); });
        for (const MetadataFile& store : listed.stores)
            attempt([this, &store] { checkStore(store.name); });
        for (const auto& [url, name] : named_)
            checkVersion(url);
        noteFiles(listed);
        return std::move(result_);
    }

private:
    void attempt(const std::function<void()>& step) {
        try {
            step();
        } catch (const DatabaseError& error) {
            addProblem(error.description());
        }
    }

    /// Damage at one place is met by several steps.
    void addProblem(const OdString& problem) {
        std::vector<OdString>& problems = result_.problems;
        if (std::find(problems.begin(), problems.end(), problem) == problems.end())
            problems.push_back(problem);
    }

    void addNote(const OdString& note) { result_.notes.push_back(note); }

    /// Whoever reads keeps nobody from writing: the lock is let go at once. One that is not there
    /// yet is not made: nobody has ever changed anything then.
    void checkHistory() {
        History& history =
            history_.emplace(History::open(folder_, root_, Database::Access::readOnly));
        for (const OdString& problem : problemsOf(history))
            addProblem(problem);
        named_ = namedVersions(history, [this](const OdString& error) { addProblem(error); });
        result_.commits = static_cast<std::int64_t>(commitNumbers(history).size());
    }

    void checkTraces() {
        const Expected<void> isThere = checkHistoryIsThere(root_, folder_);
        isLost_ = !isThere;
        if (isLost_)
            addProblem(isThere.error().message);
    }

    void checkState() {
        const sys::Outcome<sys::FileStatus> status = folder_.status(layout::statePath);
        const bool isMissing = !status && status.error() == std::errc::no_such_file_or_directory;
        if (isMissing && history_ && result_.commits == 0)
            return addNote(tr(L"There is no state file yet (qrv init makes it)"));
        const Host host;
        const sys::Outcome<sys::FileStamp> stamp = folder_.stamp(layout::statePath);
        const Expected<std::shared_ptr<common::Cache>> cache = openState(root_, folder_, host);
        if (!cache)
            return addProblem(cache.error().message);
        for (const OdString& problem : problemsOf((*cache)->read()))
            addProblem(problem);
        if (history_)
            attempt([this, &cache] { compareWithHistory((*cache)->read(), *history_); });
        if (history_ && stamp)
            attempt([&] { checkBaseline((*cache)->read(), *stamp, *history_); });
    }

    /// Nothing is lost with it, but a disk that damaged it damages other files, too.
    void checkBaseline(const common::State& state, const sys::FileStamp& stateFile,
                       History& history) {
        const Expected<std::optional<KeptBaseline>> kept = readBaseline(folder_);
        if (!kept)
            return addProblem(kept.error().message);
        const OdString head = history.note(headNote);
        // An old one is not used.
        if (isBusy_ || !*kept || (*kept)->stateFile != stateFile || (*kept)->headCommit != head)
            return;
        const auto expected = std::make_shared<const Baseline>(
            Baseline::of(history.headSizes(), state.index, stateFile.modifiedNs));
        if (toBytes(**kept) != toBytes(toKept(state, stateFile, head, expected)))
            addProblem(damagedBaseline().message);
    }

    void compareWithHistory(const common::State& state, History& history) {
        const std::optional<Plan> plan = notedPlan(history);
        if (plan)
            addNote(OdString::format(
                tr(L"'%ls' was interrupted, or is being done now by another process"),
                printable(plan->title)));
        else if (!isBusy_ && !isStateOfHistory(state, history))
            addProblem(OdString::format(tr(L"The state is damaged: it names the branch '%ls', but "
                                           L"the files of HEAD are not those of that branch"),
                                        printable(state.head.reference)));
    }

    /// From these a lost history is made anew.
    void checkRecords(History& history) {
        const Expected<ReferenceRecord> record = ReferenceRecord::read(folder_);
        if (!record)
            return addProblem(record.error().message);
        if (record->damagedLine() > 0)
            addProblem(OdString::format(tr(L"'%ls' is damaged in line %i"),
                                        OdString(layout::referenceRecordPath),
                                        record->damagedLine()));
        if (const Expected<void> notOlder = checkNotOlder(*record, history); !notOlder)
            addProblem(notOlder.error().message);
        // A process that was killed before it recorded its commit has not recorded its branch.
        if (stateOf(*record, history) != RecordState::same)
            return;
        // One that merges moves its branch when the working files are done.
        const std::int64_t firstUnrecorded = firstUnrecordedCommit(history, folder_);
        if (firstUnrecorded <= history.lastNumber())
            addNote(OdString::format(tr(L"The newest commits, from %i on, are recorded by the next "
                                        L"command that changes something"),
                                     firstUnrecorded));
        for (const std::int64_t number : commitNumbers(history)) {
            const std::optional<CommitEntry> entry = history.commitByNumber(number);
            if (!entry || number >= firstUnrecorded)
                continue;
            if (const Expected<NewCommit> commit = recordedCommit(entry->hash, folder_); !commit)
                addProblem(OdString::format(tr(L"The record of commit %i is lost: %ls"), number,
                                            commit.error().message));
        }
    }

    void checkVersion(const OdString& url) {
        if (!checked_.insert(url).second)
            return;
        const Expected<std::unique_ptr<VersionReader>> version =
            storages_.ofUrl(url).open(root_, url);
        if (version && *version == nullptr)
            addDamage(url, notKept(url).message);
        else
            checkContents(url, version);
    }

    void checkContents(const OdString& url,
                       const Expected<std::unique_ptr<VersionReader>>& version) {
        const Expected<void> whole = version ? readToEnd(**version) : version.error();
        if (!whole)
            addDamage(url, whole.error().message);
        progress_->add(version ? (*version)->sizeBytes() : 0);
    }

    /// Tells also which file it is, if that is known.
    void addDamage(const OdString& url, const OdString& problem) {
        const auto name = named_.find(url);
        if (name == named_.end())
            addProblem(problem);
        else if (name->second.commit == 0)
            addProblem(OdString::format(tr(L"%ls (it is '%ls' of an interrupted command)"), problem,
                                        printable(name->second.path)));
        else
            addProblem(OdString::format(tr(L"%ls (it is '%ls' in commit %i)"), problem,
                                        printable(name->second.path), name->second.commit));
    }

    void checkObjects(const MetadataFiles& files) {
        for (const MetadataFile& object : files.objects)
            checkVersion(objectUrl(object.name));
        result_.objects = static_cast<std::int64_t>(files.objects.size());
    }

    void addDatabaseDamage(Database& database) {
        for (const OdString& line : ut::splitByChar(database.damage(), L"\n", false))
            addProblem(OdString::format(tr(L"'%ls' is damaged: %ls"), printable(database.path()),
                                        printable(line)));
    }

    void checkPack() {
        std::optional<PackFile> pack = PackFile::open(folder_, root_);
        if (!pack)
            return;
        addDatabaseDamage(pack->database());
        for (const std::string& digest : pack->digests()) {
            const OdString url = objectUrl(OdString::fromNarrow(digest));
            checked_.insert(url);
            ++result_.packedObjects;
            attempt([this, &pack, &digest, &url] { checkPacked(*pack, digest, url); });
        }
    }

    void checkPacked(PackFile& pack, const std::string& digest, const OdString& url) {
        const Expected<std::unique_ptr<VersionReader>> version = pack.read(digest);
        if (!version || *version != nullptr)
            checkContents(url, version);
    }

    /// Oldest first, so that each drawing version finds what it builds on.
    void checkStore(const OdString& name) {
        const Expected<std::unique_ptr<FrameStore>> opened =
            storages_.drawings().openStore(root_, name);
        if (!opened)
            return addProblem(opened.error().message);
        if (*opened == nullptr)
            return;
        FrameStore& store = **opened;
        addDatabaseDamage(store.database());
        store.keepBases();
        for (const Frame& frame : store.frames()) {
            const OdString url = drawingUrl(name, OdString::fromNarrow(frame.digest));
            ++result_.drawingVersions;
            if (checked_.insert(url).second)
                attempt([&] { checkContents(url, store.open(frame)); });
        }
    }

    /// A process that was killed in a commit may have left hundreds.
    void noteLeftovers(const std::vector<MetadataFile>& leftovers) {
        if (leftovers.empty())
            return;
        const OdString first = printable(leftovers.front().name);
        addNote(leftovers.size() == 1
                    ? OdString::format(tr(L"'%ls' was left by an interrupted command (qrv gc "
                                          L"removes it after a day)"),
                                       first)
                    : OdString::format(tr(L"%i files, such as '%ls', were left by interrupted "
                                          L"commands (qrv gc removes them after a day)"),
                                       leftovers.size(), first));
    }

    void noteFiles(const MetadataFiles& files) {
        noteLeftovers(files.leftovers);
        for (const OdString& stray : files.strays)
            addNote(OdString::format(tr(L"'%ls' is nothing that belongs there"), printable(stray)));
    }

    common::RootPath root_;
    sys::Folder folder_;
    /// Whether another process holds the lock.
    bool isBusy_ = false;
    /// Whether there is no history where there was one.
    bool isLost_ = false;
    Storages storages_;
    /// Nothing when it cannot be opened.
    std::optional<History> history_;
    NamedVersions named_;
    /// Nobody knows before how many drawing versions there are.
    std::unique_ptr<Work> progress_;
    /// URLs of what was read.
    std::set<OdString> checked_;
    Verification result_;
};

/// What somebody changes who changes the repository.
std::vector<std::optional<sys::FileStamp>> stampsOf(const sys::Folder& folder) {
    std::vector<std::optional<sys::FileStamp>> stamps;
    for (const char* const path :
         {layout::historyPath, layout::statePath, layout::referenceRecordPath,
          layout::objectsFolder, layout::packPath, layout::storesFolder}) {
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

/// What another process moves from one place to another while this one looks is found in neither.
/// So damage is what every look finds, unless nobody changed anything during one.
Verification checkSeveralTimes(const common::RootPath& root, const sys::Folder& folder,
                               Caller& caller) {
    Verification found;
    for (int look = 0; look < mostLooks; ++look) {
        const auto before = stampsOf(folder);
        Verification now = Check(root, folder, caller).run();
        const bool isQuiet = stampsOf(folder) == before;
        if (look > 0 && !isQuiet)
            now.problems = inBoth(found.problems, now.problems);
        found = std::move(now);
        if (isQuiet || found.problems.empty())
            break;
    }
    return found;
}

}  // namespace

Verification verifyRepository(const common::RootPath& root, Caller& caller) {
    const sys::Outcome<sys::Folder> folder = sys::Folder::open(root.path().toNarrow());
    if (folder)
        return checkSeveralTimes(root, *folder, caller);
    Verification result;
    result.problems.push_back(
        systemFailure(tr(L"'%ls' cannot be opened: %ls"), root.path(), folder.error()).message);
    return result;
}

}  // namespace qrv
