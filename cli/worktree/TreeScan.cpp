#include <cli/worktree/TreeScan.h>
#include <common/worktree/CollectFiles.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace qrv_cli {

namespace {

/// How many files a thread takes at a time.
constexpr std::size_t portion = 500;

/// Asks for files of one folder after the other, where the system need not walk to each anew.
class StatusByFolder {
public:
    explicit StatusByFolder(const sys::Folder& root) : root_(root) {}

    sys::Outcome<sys::FileStatus> status(const std::string& path) {
        const std::size_t slash = path.rfind('/');
        if (slash == std::string::npos)
            return root_.status(path);
        if (!folder_ || path.compare(0, slash, folderPath_) != 0) {
            folderPath_ = path.substr(0, slash);
            folder_ = root_.openFolder(folderPath_);
        }
        if (!*folder_)
            return folder_->error();
        return (*folder_)->status(path.substr(slash + 1));
    }

private:
    const sys::Folder& root_;
    std::string folderPath_;
    std::optional<sys::Outcome<sys::Folder>> folder_;
};

}  // namespace

TreeScan::TreeScan(const common::RootPath& root, const sys::Folder& folder)
    : root_(root), folder_(folder) {
    listed_ = std::async(std::launch::async, [this] { return list(); }).share();
    looked_ = std::async(std::launch::async, [this] {
        listed_.wait();
        look();
    });
}

Expected<void> TreeScan::waitForPaths() {
    return listed_.get();
}

void TreeScan::finish() {
    look();
    looked_.get();
}

Expected<void> TreeScan::list() {
    const auto remember = [this](const OdString& text) { messages_.push_back(text); };
    Expected<std::vector<common::File>> files = common::collectRepoFiles(remember, root_);
    if (!files)
        return files.error();
    paths_.reserve(files->size());
    for (common::File& file : *files)
        paths_.push_back(std::move(file.path));
    statuses_.resize(paths_.size());
    return {};
}

void TreeScan::look() {
    StatusByFolder folders(folder_);
    for (;;) {
        const std::size_t begin = next_.fetch_add(portion);
        if (begin >= paths_.size())
            return;
        const std::size_t end = std::min(begin + portion, paths_.size());
        for (std::size_t index = begin; index < end; ++index) {
            if (const auto status = folders.status(paths_[index].toNarrow()))
                statuses_[index] = *status;
        }
    }
}

}  // namespace qrv_cli
