#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <engine/worktree/Baseline.h>
#include <engine/worktree/Unseen.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <atomic>
#include <cstddef>
#include <future>
#include <memory>
#include <mutex>
#include <vector>

namespace qrv {

/// A look at the working tree: at each file of a baseline, and at whatever else the library's scan
/// finds. Its maker goes on while the tree is listed. Asking the system for sizes and times takes
/// most of the time, and two threads can ask at once.
///
///     TreeScan scan(root, folder);
///     ... make the baseline ...
///     if (Expected<void> looked = scan.lookAt(baseline); !looked)
///         return looked;
class TreeScan {
public:
    /// Begins to list the tree at once. The folder is that of the root, and must live as long.
    TreeScan(const common::RootPath& root, const sys::Folder& folder);
    TreeScan(const TreeScan&) = delete;
    TreeScan& operator=(const TreeScan&) = delete;
    ~TreeScan();

    /// Looks at all files of the baseline, also where a rule ignores them: they stay versioned.
    /// Then at what else was listed. Once. Fails as the library's scan does.
    Expected<void> lookAt(std::shared_ptr<const Baseline> baseline);

    // Only after `lookAt`.

    struct Known {
        std::size_t place = 0;
        sys::FileStatus status;
    };
    /// Of the files of the baseline, by their places there, those that are seen not to be as in
    /// HEAD, or may not be, with what lies there now; what is gone is `other`. In order.
    const std::vector<Known>& candidates() const { return candidates_; }
    struct Other {
        OdString path;
        sys::FileStatus status;
    };
    /// What is listed and not in the baseline, ordered by path.
    const std::vector<Other>& others() const { return others_; }
    /// What could not be listed or asked for (see `sortedUnseen`). Files of the baseline there are
    /// not among the candidates ones.
    const std::vector<Unseen>& unseen() const { return unseen_; }
    /// What is wrong with the ignore rules.
    const std::vector<OdString>& messages() const { return messages_; }

private:
    Expected<void> list();
    void noteUnread(const OdString& path);
    void lookAtKnown();
    void lookAtOthers();
    void keep(const std::vector<Known>& candidates, const std::vector<Unseen>& unseen);

    const common::RootPath root_;
    const sys::Folder& folder_;
    /// Null when nobody will look.
    std::promise<std::shared_ptr<const Baseline>> promise_;
    std::shared_future<std::shared_ptr<const Baseline>> baseline_;
    bool isGiven_ = false;
    std::vector<OdString> messages_;
    /// Guards the two that follow.
    std::mutex foundMutex_;
    std::vector<Known> candidates_;
    std::vector<Unseen> unseen_;
    // Each element is written by one thread only.
    std::vector<Other> others_;
    // The first that nobody has begun to ask for.
    std::atomic<std::size_t> nextKnown_{0};
    std::atomic<std::size_t> nextOther_{0};
    // Last, so that what goes on has ended before anything else is gone.
    std::shared_future<Expected<void>> listed_;
    std::future<void> looked_;
};

}  // namespace qrv
