#pragma once

#include <engine/base/DigestBytes.h>
#include <engine/storage/PackReader.h>
#include <engine/storage/Packs.h>
#include <engine/storage/SimilarityIndex.h>
#include <engine/storage/Sketch.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace qrv {

/// Finds what new contents that continue nothing are best kept against: the template of a drawing,
/// the file that it was saved from under another name. Some 80 bytes of memory for each contents
/// that could be it, which are read from the packs at the first question.
class SimilarContents {
public:
    /// `packs` must outlive this.
    explicit SimilarContents(Packs& packs);

    /// The most similar contents that have room for more behind them, the best first. What cannot
    /// be read is left out, for it costs no more than room.
    std::vector<NextBase> basesFor(const Sketch& sketch, std::size_t atMost);
    /// The next contents may be kept against these, which were given to the packs' writer, if they
    /// have room behind them.
    void add(const DigestBytes& digest, const Sketch& sketch);

private:
    /// Which row of which pack; of those that were added, which of them.
    struct Origin {
        std::uint32_t pack = 0;
        std::uint32_t row = 0;
    };

    void load();
    void load(std::shared_ptr<const PackReader> pack);
    std::optional<DigestBytes> digestOf(const Origin& origin) const;
    std::optional<NextBase> baseOf(const DigestBytes& digest);

    Packs& packs_;
    bool isLoaded_ = false;
    std::vector<std::shared_ptr<const PackReader>> readers_;
    std::vector<DigestBytes> added_;
    SimilarityIndex index_;
    std::vector<Origin> origins_;
};

}  // namespace qrv
