#pragma once

#include <engine/storage/Sketch.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qrv {

/// Finds similar contents by their sketches: 72 bytes of memory for each.
class SimilarityIndex {
public:
    struct Match {
        /// Which one: the how-manieth that was added, from 0.
        std::uint32_t number = 0;
        /// How many of the 12 features agree.
        std::size_t agreement = 0;
    };

    SimilarityIndex();

    /// Adds one more, and gives its number.
    std::uint32_t add(const Sketch& sketch);
    std::uint32_t size() const { return static_cast<std::uint32_t>(sketches_.size()); }

    /// The most similar ones, the best first, and of equal ones the newest; at most `atMost`. Two
    /// features at least agree. Where very many share a feature only the newest are looked at.
    std::vector<Match> mostSimilar(const Sketch& sketch, std::size_t atMost) const;

private:
    /// Those with one value of one feature are chained from the newest to the oldest.
    using Links = std::array<std::uint32_t, Sketch::featureCount>;

    std::uint32_t& newest(std::size_t feature, std::uint16_t value);
    std::vector<std::uint32_t> candidates(const Sketch& sketch) const;

    std::vector<Sketch> sketches_;
    std::vector<Links> links_;
    std::vector<std::uint32_t> newest_;
};

}  // namespace qrv
