#include <common/worktree/VisitRepoFiles.h>
#include <engine/paths/Layout.h>
#include <engine/repository/MetadataCheck.h>
#include <engine/worktree/AsideName.h>
#include <engine/worktree/IgnoreRules.h>
#include <engine/worktree/StatusByFolder.h>
#include <engine/worktree/TreeScan.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace qrv {

namespace {

/// How many files a thread takes at a time.
constexpr std::size_t portion = 500;

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

using Given = std::shared_ptr<const Baseline>;

/// Keeps of the listed paths those that the baseline does not have. Those that come before the
/// baseline wait for it.
class OtherPaths {
public:
    explicit OtherPaths(std::shared_future<Given> baseline) : baseline_(std::move(baseline)) {}

    void add(OdString path) {
        if (baseline_.wait_for(std::chrono::seconds(0)) == std::future_status::ready)
            sortOut(std::move(path));
        else
            waiting_.push_back(std::move(path));
    }

    /// Ordered.
    std::vector<OdString> take() {
        sortOutWaiting();
        std::sort(others_.begin(), others_.end());
        return std::move(others_);
    }

private:
    void sortOut(OdString path) {
        sortOutWaiting();
        if (!isKnown(path))
            others_.push_back(std::move(path));
    }

    void sortOutWaiting() {
        for (OdString& path : std::exchange(waiting_, {})) {
            if (!isKnown(path))
                others_.push_back(std::move(path));
        }
    }

    bool isKnown(const OdString& path) {
        const Given& baseline = baseline_.get();
        if (!baseline)
            return false;
        const std::vector<KnownFile>& files = baseline->files();
        // The files of a folder are listed in order, so that one mostly follows the other.
        if (next_ == files.size() || compare(files[next_].path, path) != 0)
            next_ = placeOf(path, files);
        if (next_ == files.size() || compare(files[next_].path, path) != 0)
            return false;
        ++next_;
        return true;
    }

    static std::size_t placeOf(const OdString& path, const std::vector<KnownFile>& files) {
        const auto isBefore = [](const KnownFile& file, const OdString& sought) {
            return compare(file.path, sought) < 0;
        };
        const auto place = std::lower_bound(files.begin(), files.end(), path, isBefore);
        return static_cast<std::size_t>(place - files.begin());
    }

    std::shared_future<Given> baseline_;
    std::vector<OdString> waiting_;
    /// Where in the baseline the next path is looked for first.
    std::size_t next_ = 0;
    std::vector<OdString> others_;
};

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
    isGiven_ = true;
    promise_.set_value(std::move(baseline));
    lookAtKnown();
    if (Expected<void> listed = listed_.get(); !listed)
        return listed;
    lookAtOthers();
    looked_.get();
    std::sort(candidates_.begin(), candidates_.end(),
              [](const Known& one, const Known& other) { return one.place < other.place; });
    unseen_ = sortedUnseen(std::move(unseen_));
    return {};
}

Expected<void> TreeScan::list() {
    const auto remember = [this](const OdString& text) { messages_.push_back(text); };
    IgnoreRules rules(root_, remember);
    OtherPaths others(baseline_);
    const auto add = [&others](OdString path) {
        if (!isOurOwn(path))
            others.add(std::move(path));
    };
    Expected<void> visited = common::visitRepoFiles(
        root_, [&rules](const OdString& name) { return rules.match(name) != nullptr; }, add,
        [this](const OdString& path) { noteUnread(path); });
    if (!rules.isRead())
        noteUnread(OdString(layout::ignoreRulesPath));
    if (!visited)
        return visited;
    // The library read the rules and listed the folders by their paths.
    if (Expected<void> checked = checkMetadata(folder_, root_.path()); !checked)
        return checked;
    for (OdString& path : others.take())
        others_.push_back({std::move(path), {}});
    return {};
}

/// The scan does not say why. What can be opened now is as unknown as before: its listing broke
/// off.
void TreeScan::noteUnread(const OdString& path) {
    const std::string bytes = path.isEmpty() ? "." : path.toNarrow();
    std::error_code cause = folder_.openFolder(bytes).error();
    if (cause == std::errc::not_a_directory)
        cause = folder_.openFile(bytes).error();
    if (meansNoFile(cause))
        return;
    keep({}, {{path, cause ? cause : std::make_error_code(std::errc::io_error)}});
}

void TreeScan::lookAtKnown() {
    const Given& baseline = baseline_.get();
    if (!baseline)
        return;
    StatusByFolder folders(folder_);
    std::vector<Known> candidates;
    forEachPortion(nextKnown_, baseline->files().size(), [&](std::size_t place) {
        const KnownFile& file = baseline->files()[place];
        const std::optional<sys::FileStatus> status = folders.status(file.path);
        if (status && !isUnmodified(file, *status))
            candidates.push_back({place, *status});
    });
    keep(candidates, folders.unseen());
}

void TreeScan::lookAtOthers() {
    StatusByFolder folders(folder_);
    forEachPortion(nextOther_, others_.size(), [&](std::size_t place) {
        const std::string path = others_[place].path.toNarrow();
        const std::optional<sys::FileStatus> status = folders.status(path);
        // The listing takes what it cannot ask for as a file. A folder has not been looked into.
        if (status && status->kind == sys::FileKind::folder)
            folders.note(path, std::make_error_code(std::errc::is_a_directory));
        others_[place].status = status.value_or(sys::FileStatus());
    });
    keep({}, folders.unseen());
}

void TreeScan::keep(const std::vector<Known>& candidates, const std::vector<Unseen>& unseen) {
    const std::scoped_lock lock(foundMutex_);
    candidates_.insert(candidates_.end(), candidates.begin(), candidates.end());
    unseen_.insert(unseen_.end(), unseen.begin(), unseen.end());
}

}  // namespace qrv
