#include <cli/worktree/TreeScan.h>
#include <common/worktree/CollectFiles.h>

#include <algorithm>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace qrv_cli {

namespace {

/// How many files a thread takes at a time.
constexpr std::size_t portion = 500;

/// Asks for files of one folder after the other, where the system need not walk to each anew.
class StatusByFolder {
public:
    explicit StatusByFolder(const sys::Folder& root) : root_(root) {}

    /// What is not there is `other`.
    sys::FileStatus status(std::string_view path) {
        const std::size_t slash = path.rfind('/');
        if (slash == std::string_view::npos)
            return statusIn(root_, path);
        if (!folder_ || path.substr(0, slash) != folderPath_) {
            folderPath_ = path.substr(0, slash);
            folder_ = root_.openFolder(folderPath_);
        }
        return *folder_ ? statusIn(**folder_, path.substr(slash + 1)) : sys::FileStatus();
    }

private:
    static sys::FileStatus statusIn(const sys::Folder& folder, std::string_view name) {
        const sys::Outcome<sys::FileStatus> status = folder.status(std::string(name));
        return status ? *status : sys::FileStatus();
    }

    const sys::Folder& root_;
    std::string folderPath_;
    std::optional<sys::Outcome<sys::Folder>> folder_;
};

/// Calls `look` for every place below `count` that no other thread takes from `next`.
template <class Look>
void forEachPortion(std::atomic<std::size_t>& next, std::size_t count, Look look) {
    for (;;) {
        const std::size_t begin = next.fetch_add(portion);
        if (begin >= count)
            return;
        const std::size_t end = std::min(begin + portion, count);
        for (std::size_t place = begin; place < end; ++place)
            look(place);
    }
}

}  // namespace

TreeScan::TreeScan(const common::RootPath& root, const sys::Folder& folder)
    : root_(root), folder_(folder), baseline_(promise_.get_future().share()) {
    listed_ = std::async(std::launch::async, [this] { return list(); }).share();
    looked_ = std::async(std::launch::async, [this] {
        listed_.wait();
        lookAtKnown();
        lookAtOthers();
    });
}

TreeScan::~TreeScan() {
    if (!isGiven_)
        promise_.set_value(nullptr);
}

Expected<void> TreeScan::lookAt(std::shared_ptr<const Baseline> baseline) {
    knownStatuses_.resize(baseline->files().size());
    isGiven_ = true;
    promise_.set_value(std::move(baseline));
    lookAtKnown();
    if (Expected<void> listed = listed_.get(); !listed)
        return listed;
    lookAtOthers();
    looked_.get();
    return {};
}

Expected<void> TreeScan::list() {
    const auto remember = [this](const OdString& text) { messages_.push_back(text); };
    Expected<std::vector<common::File>> files = common::collectRepoFiles(remember, root_);
    if (!files)
        return files.error();
    if (const Given& baseline = baseline_.get())
        keepOthers(*baseline, std::move(*files));
    return {};
}

/// By a table: sorting the paths would take several times as long.
void TreeScan::keepOthers(const Baseline& baseline, std::vector<common::File> listed) {
    std::pmr::monotonic_buffer_resource memory;
    std::pmr::unordered_set<std::string_view> known(&memory);
    known.reserve(baseline.files().size());
    for (const KnownFile& file : baseline.files())
        known.insert(file.path);
    for (common::File& file : listed) {
        if (!known.contains(file.path.toNarrow()))
            others_.push_back({std::move(file.path), {}});
    }
    std::sort(others_.begin(), others_.end(),
              [](const Other& one, const Other& other) { return one.path < other.path; });
}

void TreeScan::lookAtKnown() {
    const Given& baseline = baseline_.get();
    if (!baseline)
        return;
    StatusByFolder folders(folder_);
    forEachPortion(nextKnown_, baseline->files().size(), [&](std::size_t place) {
        knownStatuses_[place] = folders.status(baseline->files()[place].path);
    });
}

void TreeScan::lookAtOthers() {
    StatusByFolder folders(folder_);
    forEachPortion(nextOther_, others_.size(), [&](std::size_t place) {
        others_[place].status = folders.status(others_[place].path.toNarrow());
    });
}

}  // namespace qrv_cli
