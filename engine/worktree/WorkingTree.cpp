#include <engine/history/JournalEntry.h>
#include <engine/paths/Layout.h>
#include <engine/worktree/KeptBaseline.h>
#include <engine/worktree/TreeScan.h>
#include <engine/worktree/WorkingTree.h>

#include <cstdint>
#include <utility>

namespace qrv {

namespace {

/// Whether the clock of the file system had gone on between the two, so that no stamp of the
/// older file that comes after the younger one can have the times of this one.
bool isLater(const sys::FileStamp& younger, const sys::FileStamp& older) {
    return younger.modifiedNs > older.modifiedNs && younger.changedNs > older.changedNs;
}

}  // namespace

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
    std::optional<common::State> state;
    if (tree->scan_ && use != Repository::Use::change)
        state = tree->takeKeptBaseline();
    if (const Expected<void> loaded = tree->repository().load(std::move(state)); !loaded)
        return loaded.error();
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

/// One that cannot be read is no loss.
std::optional<common::State> WorkingTree::takeKeptBaseline() {
    const sys::Outcome<sys::FileStamp> stateFile = folder().stamp(layout::statePath);
    const sys::Outcome<sys::FileStamp> keptFile = folder().stamp(layout::baselinePath);
    if (!stateFile || !keptFile || !isLater(*keptFile, *stateFile))
        return std::nullopt;
    Expected<std::optional<KeptBaseline>> kept = readBaseline(folder());
    if (!kept || !*kept || (*kept)->stateFile != *stateFile ||
        (*kept)->headCommit != repository_->history().note(headNote))
        return std::nullopt;
    kept_ = std::move((*kept)->baseline);
    return std::move((*kept)->state);
}

std::shared_ptr<const Baseline> WorkingTree::baseline() {
    if (kept_ && !repository_->hasState())
        return kept_;
    return baselineFrom(repository_->history().headSizes());
}

std::shared_ptr<const Baseline> WorkingTree::baselineOf(const std::vector<OdString>& paths) {
    return baselineFrom(repository_->history().headSizesOf(paths));
}

std::shared_ptr<const Baseline> WorkingTree::baselineFrom(const std::vector<SizedFile>& head) {
    const std::optional<sys::FileStamp>& stamp = repository_->stateStamp();
    const std::optional<std::int64_t> modifiedNs =
        stamp ? std::optional(stamp->modifiedNs) : std::nullopt;
    return std::make_shared<const Baseline>(
        Baseline::of(head, repository_->state().index, modifiedNs));
}

void WorkingTree::keepBaseline(std::shared_ptr<const Baseline> baseline) {
    const std::optional<sys::FileStamp>& stamp = repository_->stateStamp();
    if (!repository_->mayChange() || !repository_->hasState() || !stamp ||
        baseline->files().empty())
        return;
    // Conflicts do not last, and have too many parts to be kept twice.
    if (!repository_->state().conflicts.empty())
        return;
    toKeep_ = toKept(repository_->state(), *stamp, repository_->history().note(headNote),
                     std::move(baseline));
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
    if (closed)
        writeKeptBaseline();
    return closed;
}

/// Without it the next look takes longer, and tries again: nobody need know.
void WorkingTree::writeKeptBaseline() {
    if (!toKeep_)
        return;
    const SharedMode shared(folder(), caller());
    const sys::Outcome<sys::FileStamp> stamp = folder().stamp(layout::statePath);
    if (stamp && *stamp == toKeep_->stateFile)
        static_cast<void>(writeBaseline(*toKeep_, folder()));
    toKeep_.reset();
}

}  // namespace qrv
