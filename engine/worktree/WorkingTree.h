#pragma once

#include <engine/history/HeadFile.h>
#include <engine/repository/Repository.h>
#include <engine/worktree/Baseline.h>
#include <platform/kernel/OdString.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qrv {

class TreeScan;

/// A repository together with the working files that it versions.
class WorkingTree {
public:
    /// Whether the working tree is scanned while the rest is opened.
    enum class Scan { later, ahead };

    /// Opens the repository that holds `folder`, and loads it (see `Repository`). What an
    /// interrupted command left is not looked at: see OpenTree.h. With `Scan::ahead` a scan begins
    /// meanwhile, for `findChanges`, and a look takes the lock if that is free, to keep what it
    /// found.
    ///
    /// For a change, what the index of the state knows is noted beside the files of HEAD, and the
    /// index is empty from then on.
    static Expected<std::unique_ptr<WorkingTree>> open(const std::string& folder,
                                                       Repository::Use use, Caller& caller,
                                                       Scan scan = Scan::later);

    WorkingTree(const WorkingTree&) = delete;
    WorkingTree& operator=(const WorkingTree&) = delete;
    ~WorkingTree();

    Repository& repository() { return *repository_; }
    const Repository& repository() const { return *repository_; }
    // Of the repository.
    Caller& caller() const { return repository_->caller(); }
    const common::RootPath& root() const { return repository_->root(); }
    const sys::Folder& folder() const { return repository_->folder(); }

    /// What the working tree is to be compared with now: from the kept one, where few files of HEAD
    /// have changed since, else from the history.
    std::shared_ptr<const Baseline> baseline();
    /// The same of the files of these paths, ordered and each once, that are in HEAD.
    std::shared_ptr<const Baseline> baselineOf(const std::vector<OdString>& paths);

    /// Notes of working files with the contents of HEAD what they were when they were seen to be
    /// so, unless that is too young to tell them from what comes later. Without the lock, and in a
    /// history of an older layout, nothing is noted.
    void note(std::vector<NotedStamp> seen);
    /// Lets `close` keep the baseline, if it is held that nobody else is at work, and so many files
    /// of HEAD have changed since one was kept that making one anew would take less time.
    void keepBaseline();

    /// The scan that was begun when this was opened, or a new one. It must end before this.
    std::unique_ptr<TreeScan> takeScan();

    /// Tells what is wrong with the ignore rules, once, however often somebody looks.
    void tellOfRules(const std::vector<OdString>& messages);

    /// Writes a changed state, and the baseline that is to be kept. Fails when the state cannot be
    /// written; the old file is untouched then. Afterwards there is no state here any more.
    Expected<void> close();

private:
    explicit WorkingTree(std::unique_ptr<Repository> repository);

    void scanAhead();
    void emptyIndex();
    void believeIndex(Baseline& baseline);
    std::shared_ptr<Baseline> keptBaseline();
    std::shared_ptr<Baseline> newBaseline();
    void writeKeptBaseline();

    std::unique_ptr<Repository> repository_;
    bool keepsBaseline_ = false;
    /// Whether the one that is kept was not good for anything.
    bool isKeptUseless_ = false;
    /// What was made of all files of HEAD, and after which change.
    std::shared_ptr<const Baseline> made_;
    std::optional<HeadChange> madeAfter_;
    std::unique_ptr<TreeScan> scan_;
    std::vector<OdString> toldOfRules_;
};

/// Which of these stamps are older than what happens from now on by so much that every later change
/// gives the file another stamp, by the clock of the file system that holds `root`.
std::vector<NotedStamp> safeStamps(std::vector<NotedStamp> stamps, const sys::Folder& root);

}  // namespace qrv
