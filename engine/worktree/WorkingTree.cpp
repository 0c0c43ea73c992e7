#include <engine/history/JournalEntry.h>
#include <engine/paths/Layout.h>
#include <engine/worktree/KeptBaseline.h>
#include <engine/worktree/StatusByFolder.h>
#include <engine/worktree/TreeScan.h>
#include <engine/worktree/WorkingTree.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

namespace qrv {

namespace {

/// A baseline behind which more than one of so many files have changed is made anew.
constexpr std::uint64_t filesForChange = 4;
/// Fewer than these are read at once in any case.
constexpr std::uint64_t fewChanges = 100;

/// Some file systems count their times in steps of this: a file may change again without another
/// time.
constexpr std::int64_t coarsestTimeStepNs = 2'000'000'000;

bool areFew(std::uint64_t changes, std::uint64_t files) {
    return changes <= fewChanges + files / filesForChange;
}

KnownFile toKnown(const HeadFile& file) {
    KnownFile known;
    known.sizeBytes = file.file.sizeBytes;
    if (file.stamp)
        known.note(*file.stamp);
    return known;
}

sys::FileStamp stampOf(const sys::FileStatus& status) {
    return {.number = status.number,
            .sizeBytes = status.sizeBytes,
            .modifiedNs = status.modifiedNs,
            .changedNs = status.changedNs};
}

/// The time of what happens in that file system now; nothing when it cannot be had.
std::optional<std::int64_t> timeOfFileSystem(const sys::Folder& root) {
    if (root.refresh(layout::lockPath, std::chrono::seconds(0)))
        return std::nullopt;
    const sys::Outcome<sys::FileStamp> stamp = root.stamp(layout::lockPath);
    return stamp ? std::optional(stamp->modifiedNs) : std::nullopt;
}

}  // namespace

std::vector<NotedStamp> safeStamps(std::vector<NotedStamp> stamps, const sys::Folder& root) {
    const std::optional<std::int64_t> now = stamps.empty() ? std::nullopt : timeOfFileSystem(root);
    std::erase_if(stamps, [&now](const NotedStamp& noted) {
        return !now || !noted.stamp || noted.stamp->modifiedNs >= *now - coarsestTimeStepNs;
    });
    return stamps;
}

Expected<std::unique_ptr<WorkingTree>> WorkingTree::open(const std::string& folder,
                                                         Repository::Use use, Caller& caller,
                                                         Scan scan) {
    if (use == Repository::Use::look && scan == Scan::ahead)
        use = Repository::Use::lookAndNote;
    Expected<std::unique_ptr<Repository>> repository = Repository::open(folder, use, caller);
    if (!repository)
        return repository.error();
    std::unique_ptr<WorkingTree> tree(new WorkingTree(std::move(*repository)));
    if (scan == Scan::ahead)
        tree->scanAhead();
    if (const Expected<void> loaded = tree->repository().load(); !loaded)
        return loaded.error();
    if (use == Repository::Use::change)
        tree->emptyIndex();
    return tree;
}

WorkingTree::WorkingTree(std::unique_ptr<Repository> repository)
    : repository_(std::move(repository)) {
}

WorkingTree::~WorkingTree() = default;

/// A scan makes the ignore file when there is none, and a command that fails is to make nothing.
/// What was interrupted changes files before they are looked at.
void WorkingTree::scanAhead() {
    if (folder().status(layout::ignoreRulesPath) && !notedEntry(repository_->history()))
        scan_ = std::make_unique<TreeScan>(root(), folder());
}

/// It is of an earlier program, and has an entry for every file.
void WorkingTree::emptyIndex() {
    if (repository_->state().index.empty())
        return;
    const std::shared_ptr<Baseline> baseline = newBaseline();
    believeIndex(*baseline);
    StatusByFolder folders(folder());
    std::vector<NotedStamp> seen;
    for (const KnownFile& file : baseline->files()) {
        if (file.isNoted() || file.unmodifiedTicks == KnownFile::never)
            continue;
        const std::optional<sys::FileStatus> status = folders.status(file.path);
        if (status && isUnmodified(file, *status))
            seen.push_back({OdString::fromNarrow(file.path), stampOf(*status)});
    }
    note(std::move(seen));
    repository_->cache().write().index.clear();
}

void WorkingTree::believeIndex(Baseline& baseline) {
    const std::optional<sys::FileStamp>& stamp = repository_->stateStamp();
    baseline.believe(repository_->state().index,
                     stamp ? std::optional(stamp->modifiedNs) : std::nullopt);
}

std::shared_ptr<const Baseline> WorkingTree::baseline() {
    std::shared_ptr<Baseline> baseline = keptBaseline();
    isKeptUseless_ = !baseline;
    if (!baseline)
        baseline = newBaseline();
    believeIndex(*baseline);
    return baseline;
}

/// One that cannot be read is no loss.
std::shared_ptr<Baseline> WorkingTree::keptBaseline() {
    History& history = repository_->history();
    if (!history.lastHeadChange())
        return nullptr;
    Expected<std::optional<KeptBaseline>> kept = readBaseline(folder());
    if (!kept || !*kept)
        return nullptr;
    const auto changed = history.headChangesAfter((*kept)->last);
    std::shared_ptr<Baseline> baseline = std::move((*kept)->baseline);
    if (!changed || !areFew(changed->size(), baseline->files().size()))
        return nullptr;
    std::map<std::string, std::optional<KnownFile>> files;
    for (const RelativePath& path : *changed) {
        const std::optional<HeadFile> file = history.headFile(path);
        files.insert_or_assign(path.bytes(), file ? std::optional(toKnown(*file)) : std::nullopt);
    }
    if (!files.empty())
        baseline->change(std::move(files));
    return baseline;
}

std::shared_ptr<Baseline> WorkingTree::newBaseline() {
    // Before the files: what changes meanwhile is read once more by whoever takes the copy.
    madeAfter_ = repository_->history().lastHeadChange();
    BaselineBuilder builder;
    repository_->history().visitHeadFiles(
        [&builder](const HeadFile& file) { builder.add(file.path.bytes(), toKnown(file)); });
    auto baseline = std::make_shared<Baseline>(builder.build());
    made_ = baseline;
    return baseline;
}

std::shared_ptr<const Baseline> WorkingTree::baselineOf(const std::vector<OdString>& paths) {
    BaselineBuilder builder;
    for (const OdString& path : paths) {
        if (const std::optional<HeadFile> file = repository_->history().headFile(path))
            builder.add(file->path.bytes(), toKnown(*file));
    }
    const auto baseline = std::make_shared<Baseline>(builder.build());
    believeIndex(*baseline);
    return baseline;
}

void WorkingTree::note(std::vector<NotedStamp> seen) {
    if (seen.empty() || !repository_->mayChange() || !repository_->history().lastHeadChange())
        return;
    const SharedMode shared(folder(), caller());
    seen = safeStamps(std::move(seen), folder());
    if (!seen.empty())
        repository_->historyForNotes().noteStamps(seen);
}

void WorkingTree::keepBaseline() {
    keepsBaseline_ = repository_->mayChange();
}

std::unique_ptr<TreeScan> WorkingTree::takeScan() {
    return scan_ ? std::move(scan_) : std::make_unique<TreeScan>(root(), folder());
}

void WorkingTree::tellOfRules(const std::vector<OdString>& messages) {
    if (messages == toldOfRules_)
        return;
    for (const OdString& message : messages)
        caller().note(message);
    toldOfRules_ = messages;
}

Expected<void> WorkingTree::close() {
    Expected<void> closed = repository_->close();
    if (closed && keepsBaseline_)
        writeKeptBaseline();
    return closed;
}

/// Without it the next look takes longer, and tries again: nobody need know.
void WorkingTree::writeKeptBaseline() {
    const std::optional<HeadChange> last = repository_->history().lastHeadChange();
    if (!last)
        return;
    const std::optional<BaselineHeading> kept = readBaselineHeading(folder());
    if (kept && !isKeptUseless_) {
        const auto behind = static_cast<std::uint64_t>(last->sequence - kept->last.sequence);
        if (last->sequence >= kept->last.sequence && areFew(behind, kept->fileCount) &&
            repository_->history().headChangesAfter(kept->last))
            return;
    }
    const bool isAlmostNew =
        madeAfter_ && areFew(static_cast<std::uint64_t>(last->sequence - madeAfter_->sequence),
                             made_->files().size());
    if (!isAlmostNew)
        newBaseline();
    const SharedMode shared(folder(), caller());
    if (!made_->files().empty() && madeAfter_)
        static_cast<void>(writeBaseline(*madeAfter_, *made_, folder()));
}

}  // namespace qrv
