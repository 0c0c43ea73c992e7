#include <engine/base/Parallel.h>
#include <engine/maintenance/PackCheck.h>
#include <engine/storage/Packs.h>
#include <engine/storage/ReadToEnd.h>

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>

namespace qrv {

namespace {

/// So much is read by one thread before it takes the next part: what lies side by side shares
/// blocks and bases.
constexpr std::int64_t bytesOfPart = std::int64_t{4} << 20;
constexpr std::size_t mostOfPart = 4096;

/// The ends of parts of about the same length.
std::vector<std::size_t> endsOfParts(const std::vector<PackedContents>& contents) {
    std::vector<std::size_t> ends;
    std::size_t begin = 0;
    std::int64_t sizeBytes = 0;
    for (std::size_t i = 0; i < contents.size(); ++i) {
        sizeBytes += contents[i].sizeBytes;
        if (sizeBytes < bytesOfPart && i + 1 - begin < mostOfPart && i + 1 < contents.size())
            continue;
        // What shares a block stays together.
        if (i + 1 < contents.size() && contents[i + 1].blockNumber == contents[i].blockNumber)
            continue;
        ends.push_back(i + 1);
        begin = i + 1;
        sizeBytes = 0;
    }
    return ends;
}

/// Packs for each of the threads, with what these have read last.
class Readers {
public:
    Readers(const sys::Folder& root, const std::vector<std::string>& ignored)
        : root_(root), ignored_(ignored) {}

    std::unique_ptr<Packs> take() {
        const std::lock_guard guard(mutex_);
        if (free_.empty())
            return std::make_unique<Packs>(root_, ignored_);
        std::unique_ptr<Packs> packs = std::move(free_.back());
        free_.pop_back();
        return packs;
    }
    void giveBack(std::unique_ptr<Packs> packs) {
        const std::lock_guard guard(mutex_);
        free_.push_back(std::move(packs));
    }

private:
    sys::Folder root_;
    std::vector<std::string> ignored_;
    std::mutex mutex_;
    std::vector<std::unique_ptr<Packs>> free_;
};

bool isWhole(Packs& packs, const PackedContents& contents) {
    const Expected<std::unique_ptr<VersionReader>> reader = packs.open(contents);
    return reader && *reader != nullptr && readToEnd(**reader);
}

}  // namespace

Expected<PackContents> contentsOf(const PackReader& pack) {
    const Expected<std::vector<PackEntry>> entries = pack.entries();
    if (!entries)
        return entries.error();
    const Expected<std::vector<std::optional<PackBlock>>> blocks = pack.blocks();
    if (!blocks)
        return blocks.error();
    PackContents all;
    all.contents.reserve(entries->size());
    for (const PackEntry& entry : *entries) {
        std::optional<PackedContents> place;
        if (entry.block < blocks->size() && (*blocks)[entry.block])
            place = placeOf(pack.source(), entry, *(*blocks)[entry.block]);
        if (place)
            all.contents.push_back(std::move(*place));
        else
            ++all.impossible;
    }
    std::sort(all.contents.begin(), all.contents.end(),
              [](const PackedContents& one, const PackedContents& other) {
                  return std::pair(one.block.offset, one.position) <
                         std::pair(other.block.offset, other.position);
              });
    return all;
}

// No thread makes messages: whoever wants to know what is wrong reads these again.
std::vector<std::size_t> unreadable(const std::vector<PackedContents>& contents,
                                    const sys::Folder& root,
                                    const std::vector<std::string>& ignored) {
    const std::vector<std::size_t> ends = endsOfParts(contents);
    std::vector<std::vector<std::size_t>> found(ends.size());
    Readers readers(root, ignored);
    inParallel(ends.size(), [&](std::size_t part) {
        std::unique_ptr<Packs> packs = readers.take();
        for (std::size_t i = part == 0 ? 0 : ends[part - 1]; i < ends[part]; ++i) {
            if (!isWhole(*packs, contents[i]))
                found[part].push_back(i);
        }
        readers.giveBack(std::move(packs));
    });
    std::vector<std::size_t> all;
    for (const std::vector<std::size_t>& some : found)
        all.insert(all.end(), some.begin(), some.end());
    return all;
}

}  // namespace qrv
