#pragma once

#include <cli/history/Commit.h>
#include <cli/worktree/TreeScan.h>
#include <platform/kernel/OdString.h>
#include <platform/sys/Folder.h>

#include <cstddef>
#include <deque>
#include <utility>
#include <vector>

namespace qrv_cli {

/// The files of HEAD beside what lies in the working tree.
class MatchedTree {
public:
    /// `head` is ordered by path. The scan must have its paths; it is finished here, and must live
    /// as long. The folder is that of the root.
    MatchedTree(std::vector<SizedFile> head, TreeScan& scan, const sys::Folder& folder);

    /// Ordered by path. A path may be moved out of it when it is not needed any more.
    std::vector<SizedFile>& head() { return head_; }
    /// Of each file of HEAD what it is now; null when it is gone.
    const std::vector<const sys::FileStatus*>& present() const { return present_; }
    /// What HEAD does not have, ordered by path.
    const std::vector<SizedFile>& newFiles() const { return newFiles_; }
    /// Symbolic links, ordered.
    std::vector<OdString> takeLinks() { return std::move(links_); }

private:
    std::vector<std::size_t> matchPaths(const TreeScan& scan);
    void sortOut(const TreeScan& scan, const std::vector<std::size_t>& others);
    void addHiddenFiles(const sys::Folder& folder);

    std::vector<SizedFile> head_;
    /// In the scan or in `hidden_`.
    std::vector<const sys::FileStatus*> present_;
    /// Of files of HEAD that the scan left out.
    std::deque<sys::FileStatus> hidden_;
    std::vector<SizedFile> newFiles_;
    std::vector<OdString> links_;
};

}  // namespace qrv_cli
