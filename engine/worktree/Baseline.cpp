#include <engine/worktree/Baseline.h>
#include <engine/worktree/Ticks.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace qrv {

namespace {

using Index = std::map<OdString, common::IndexData>;

/// Finds entries by paths that come in the order of the index, so that a step or two lead from one
/// to the next.
class IndexWalk {
public:
    explicit IndexWalk(const Index& index) : index_(index), next_(index.begin()) {}

    /// Null when there is none.
    const common::IndexData* entry(const OdString& path) {
        while (next_ != index_.end() && next_->first < path)
            ++next_;
        return next_ != index_.end() && next_->first == path ? &next_->second : nullptr;
    }

private:
    const Index& index_;
    Index::const_iterator next_;
};

bool isAscii(wchar_t unit) {
    constexpr wchar_t firstBeyond = 0x80;
    return unit >= 0 && unit < firstBeyond;
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

bool isUnmodified(const KnownFile& file, const sys::FileStatus& status) {
    return status.kind == sys::FileKind::regular && status.sizeBytes == file.sizeBytes &&
           toTicks(status.modifiedNs) == file.unmodifiedTicks;
}

Baseline Baseline::of(const std::vector<SizedFile>& head, const Index& index,
                      std::optional<std::int64_t> stateModifiedNs) {
    const std::int64_t believedBefore =
        stateModifiedNs ? toTicks(*stateModifiedNs) - coarsestTimeStepTicks : KnownFile::never;
    IndexWalk walk(index);
    std::vector<char> memory;
    std::vector<KnownFile> files;
    std::vector<std::size_t> ends;
    files.reserve(head.size());
    ends.reserve(head.size());
    for (const SizedFile& file : head) {
        KnownFile& known = files.emplace_back();
        known.sizeBytes = file.sizeBytes;
        if (const common::IndexData* const noted = walk.entry(file.path)) {
            if (noted->modified)
                known.modifiedTicks = noted->lastChecked;
            else if (noted->lastChecked < believedBefore)
                known.unmodifiedTicks = noted->lastChecked;
        }
        const std::string path = file.path.toNarrow();
        memory.insert(memory.end(), path.begin(), path.end());
        ends.push_back(memory.size());
    }
    // Only now the bytes stay where they are.
    std::size_t begin = 0;
    for (std::size_t place = 0; place < files.size(); ++place) {
        files[place].path = {memory.data() + begin, ends[place] - begin};
        begin = ends[place];
    }
    return {std::move(memory), std::move(files)};
}

Baseline::Baseline(std::vector<char> memory, std::vector<KnownFile> files)
    : memory_(std::move(memory)), files_(std::move(files)) {
}

}  // namespace qrv
