#pragma once

#include <engine/base/Bytes.h>
#include <engine/maintenance/ItemReader.h>
#include <engine/maintenance/WrittenChains.h>
#include <engine/storage/SimilarityIndex.h>
#include <engine/storage/Sketch.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace qrv {

/// Contents of at most this length are made against others: both are held in memory.
inline constexpr std::int64_t longestWithBase = std::int64_t{128} << 20;

/// Finds what each of the contents is best made against while packs are written anew: the next
/// version of the same file, or the most similar contents, whichever takes the least.
class BaseSearch {
public:
    /// All of these must outlive this.
    BaseSearch(const Holdings& holdings, const PackingPlan& plan, ItemReader& reader);

    struct Base {
        std::uint32_t item = PackItem::none;
        NextBase next;
        std::shared_ptr<const Bytes> contents;
    };
    /// Nothing when there is none. `sketch` is that of the contents.
    std::optional<Base> find(std::uint32_t item, const Bytes& contents,
                             const std::optional<Sketch>& sketch);
    /// The item was written, against `base` if there is one.
    void note(std::uint32_t item, const Base* base, const std::optional<Sketch>& sketch);

private:
    void learnKept();
    std::vector<Base> candidates(std::uint32_t item, const std::optional<Sketch>& sketch) const;
    void addCandidate(std::vector<Base>& bases, std::uint32_t item) const;

    const Holdings& holdings_;
    const PackingPlan& plan_;
    ItemReader& reader_;
    WrittenChains chains_;
    SimilarityIndex similar_;
    /// Which item each sketch of the index belongs to.
    std::vector<std::uint32_t> similarItems_;
};

}  // namespace qrv
