#include <engine/worktree/Baseline.h>
#include <engine/worktree/Ticks.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace qrv {

namespace {

bool isAscii(wchar_t unit) {
    constexpr wchar_t firstBeyond = 0x80;
    return unit >= 0 && unit < firstBeyond;
}

bool isBefore(const KnownFile& one, const KnownFile& other) {
    return compareTexts(one.path, other.path) < 0;
}

}  // namespace

int compare(std::string_view bytes, const OdString& text) {
    // Most paths are ASCII, or differ before they are anything else: nothing is decoded then.
    const std::wstring& units = text.toWide();
    const auto [byte, unit] =
        std::mismatch(bytes.begin(), bytes.end(), units.begin(), units.end(),
                      [](char one, wchar_t other) { return isAscii(one) && one == other; });
    if (byte == bytes.end() || unit == units.end())
        return static_cast<int>(byte != bytes.end()) - static_cast<int>(unit != units.end());
    if (isAscii(*byte) && isAscii(*unit))
        return *byte < *unit ? -1 : 1;
    const OdString decoded = OdString::fromNarrow(bytes);
    return static_cast<int>(decoded > text) - static_cast<int>(decoded < text);
}

int compareTexts(std::string_view one, std::string_view other) {
    const auto [left, right] = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
    const bool isLeftEnd = left == one.end();
    const bool isRightEnd = right == other.end();
    if (isLeftEnd && isRightEnd)
        return 0;
    // A byte beyond ASCII may belong to what came before it.
    if ((isLeftEnd || isAscii(*left)) && (isRightEnd || isAscii(*right))) {
        if (isLeftEnd || isRightEnd)
            return isLeftEnd ? -1 : 1;
        return *left < *right ? -1 : 1;
    }
    return compare(one, OdString::fromNarrow(other));
}

bool isUnmodified(const KnownFile& file, const sys::FileStatus& status) {
    if (status.kind != sys::FileKind::regular || status.sizeBytes != file.sizeBytes)
        return false;
    if (file.isNoted())
        return status.number == file.number && status.modifiedNs == file.modifiedNs &&
               status.changedNs == file.changedNs;
    return toTicks(status.modifiedNs) == file.unmodifiedTicks;
}

Baseline::Baseline(std::vector<char> memory, std::vector<KnownFile> files)
    : files_(std::move(files)) {
    memory_.push_back(std::move(memory));
}

void Baseline::believe(const std::map<OdString, common::IndexData>& index,
                       std::optional<std::int64_t> stateModifiedNs) {
    if (index.empty() || !stateModifiedNs)
        return;
    const std::int64_t believedBefore = toTicks(*stateModifiedNs) - coarsestTimeStepTicks;
    // Both are ordered by path.
    auto next = index.begin();
    for (KnownFile& file : files_) {
        while (next != index.end() && compare(file.path, next->first) > 0)
            ++next;
        if (next == index.end())
            return;
        const common::IndexData& noted = next->second;
        if (compare(file.path, next->first) == 0 && !noted.modified &&
            noted.lastChecked < believedBefore)
            file.unmodifiedTicks = noted.lastChecked;
    }
}

void Baseline::change(std::map<std::string, std::optional<KnownFile>> files) {
    BaselineBuilder added;
    for (const auto& [path, file] : files) {
        if (file)
            added.add(path, *file);
    }
    Baseline others = added.build();
    std::erase_if(
        files_, [&files](const KnownFile& file) { return files.contains(std::string(file.path)); });
    std::vector<KnownFile> merged;
    merged.reserve(files_.size() + others.files_.size());
    std::merge(files_.begin(), files_.end(), others.files_.begin(), others.files_.end(),
               std::back_inserter(merged), isBefore);
    files_ = std::move(merged);
    std::move(others.memory_.begin(), others.memory_.end(), std::back_inserter(memory_));
}

void BaselineBuilder::add(std::string_view path, const KnownFile& file) {
    memory_.insert(memory_.end(), path.begin(), path.end());
    ends_.push_back(memory_.size());
    files_.push_back(file);
}

Baseline BaselineBuilder::build() {
    // Only now the bytes stay where they are.
    std::size_t begin = 0;
    for (std::size_t place = 0; place < files_.size(); ++place) {
        files_[place].path = {memory_.data() + begin, ends_[place] - begin};
        begin = ends_[place];
    }
    // The order of the bytes is not always that of the texts.
    if (!std::is_sorted(files_.begin(), files_.end(), isBefore))
        std::sort(files_.begin(), files_.end(), isBefore);
    ends_.clear();
    return {std::move(memory_), std::move(files_)};
}

}  // namespace qrv
