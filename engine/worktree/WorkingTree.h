#pragma once

#include <engine/repository/Repository.h>
#include <engine/worktree/BaselineBytes.h>
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
    /// interrupted command left is not looked at: see OpenTree.h.
    ///
    /// With `Scan::ahead` a scan begins meanwhile, for `findChanges`, and a look is content with a
    /// kept baseline instead of the whole state.
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

    /// What the working tree is to be compared with now.
    std::shared_ptr<const Baseline> baseline();
    /// The same of those of these paths, ordered and each once, that are in HEAD.
    std::shared_ptr<const Baseline> baselineOf(const std::vector<OdString>& paths);
    /// Lets `close` keep the baseline, so that the next look takes less time. That needs the lock,
    /// files in HEAD, and a state without conflicts that is not written after this.
    void keepBaseline(std::shared_ptr<const Baseline> baseline);

    /// The scan that was begun when this was opened, or a new one. It must end before this.
    std::unique_ptr<TreeScan> takeScan();

    /// Tells what is wrong with the ignore rules, once, however often somebody looks.
    void tellOfRules(const std::vector<OdString>& messages);

    /// Writes a changed state, and the baseline that is to be kept. Fails when the state cannot be
    /// written; the old file is untouched then. Afterwards there is no state here any more.
    Expected<void> close();

private:
    explicit WorkingTree(std::unique_ptr<Repository> repository);

    std::shared_ptr<const Baseline> baselineFrom(const std::vector<SizedFile>& head);

    void scanAhead();
    std::optional<common::State> takeKeptBaseline();
    void writeKeptBaseline();

    std::unique_ptr<Repository> repository_;
    /// Of a kept baseline; good as long as the state was not read.
    std::shared_ptr<const Baseline> kept_;
    std::optional<KeptBaseline> toKeep_;
    std::unique_ptr<TreeScan> scan_;
    std::vector<OdString> toldOfRules_;
};

}  // namespace qrv
