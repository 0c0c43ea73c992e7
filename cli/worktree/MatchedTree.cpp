#include <cli/worktree/MatchedTree.h>

#include <algorithm>
#include <memory_resource>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace qrv_cli {

MatchedTree::MatchedTree(std::vector<SizedFile> head, TreeScan& scan, const sys::Folder& folder)
    : head_(std::move(head)), present_(head_.size(), nullptr) {
    const std::vector<std::size_t> others = matchPaths(scan);
    scan.finish();
    sortOut(scan, others);
    addHiddenFiles(folder);
    std::sort(links_.begin(), links_.end());
}

/// Gives the places of the other paths. By a table: sorting the paths would take several times as
/// long.
std::vector<std::size_t> MatchedTree::matchPaths(const TreeScan& scan) {
    std::pmr::monotonic_buffer_resource memory;
    std::pmr::unordered_map<std::wstring_view, std::size_t> places(&memory);
    places.reserve(head_.size());
    for (std::size_t place = 0; place < head_.size(); ++place)
        places.emplace(head_[place].path.toWide(), place);
    std::vector<std::size_t> others;
    for (std::size_t place = 0; place < scan.paths().size(); ++place) {
        const auto found = places.find(scan.paths()[place].toWide());
        if (found == places.end())
            others.push_back(place);
        else
            present_[found->second] = &scan.statuses()[place];
    }
    return others;
}

/// A link that took the place of a file of HEAD is met by its path there.
void MatchedTree::sortOut(const TreeScan& scan, const std::vector<std::size_t>& others) {
    for (const std::size_t place : others) {
        const sys::FileStatus& status = scan.statuses()[place];
        if (status.kind == sys::FileKind::regular)
            newFiles_.push_back({scan.paths()[place], status.sizeBytes});
        else if (status.kind == sys::FileKind::link)
            links_.push_back(scan.paths()[place]);
    }
    std::sort(newFiles_.begin(), newFiles_.end(),
              [](const auto& one, const auto& other) { return one.path < other.path; });
}

/// A file of HEAD stays versioned when a rule ignores it later.
void MatchedTree::addHiddenFiles(const sys::Folder& folder) {
    for (std::size_t place = 0; place < head_.size(); ++place) {
        const OdString& path = head_[place].path;
        if (present_[place] == nullptr) {
            // Not listed: its folder may have become a link.
            if (const auto status = folder.status(path.toNarrow()))
                present_[place] = &hidden_.emplace_back(*status);
        }
        if (present_[place] == nullptr || present_[place]->kind == sys::FileKind::regular)
            continue;
        if (present_[place]->kind == sys::FileKind::link)
            links_.push_back(path);
        present_[place] = nullptr;
    }
}

}  // namespace qrv_cli
