#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <platform/kernel/OdString.h>
#include <platform/sys/Folder.h>

#include <atomic>
#include <cstddef>
#include <future>
#include <vector>

namespace qrv_cli {

/// A scan of the working tree with every file's size and time, which goes on while its maker does
/// something else. Asking the system for sizes and times takes most of it, and two can ask at once.
class TreeScan {
public:
    /// Begins at once. The folder is that of the root, and must live as long.
    TreeScan(const common::RootPath& root, const sys::Folder& folder);
    TreeScan(const TreeScan&) = delete;
    TreeScan& operator=(const TreeScan&) = delete;
    ~TreeScan() = default;

    /// Waits for the paths. Fails as the library's scan does.
    Expected<void> waitForPaths();
    /// Everything that the scan found, in its order. Only after `waitForPaths`.
    const std::vector<OdString>& paths() const { return paths_; }
    /// What is wrong with the ignore rules. Only after `waitForPaths`.
    const std::vector<OdString>& messages() const { return messages_; }

    /// Helps with what is left to do. Only after `waitForPaths`, once.
    void finish();
    /// Of each path; what went away since it was listed is as a device. Only after `finish`.
    const std::vector<sys::FileStatus>& statuses() const { return statuses_; }

private:
    Expected<void> list();
    void look();

    const common::RootPath root_;
    const sys::Folder& folder_;
    std::vector<OdString> messages_;
    std::vector<OdString> paths_;
    /// Each is written by one thread only.
    std::vector<sys::FileStatus> statuses_;
    /// The first path that nobody has begun to ask for.
    std::atomic<std::size_t> next_{0};
    // Last, so that what goes on has ended before anything else is gone.
    std::shared_future<Expected<void>> listed_;
    std::future<void> looked_;
};

}  // namespace qrv_cli
