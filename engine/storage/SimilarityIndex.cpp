#include <engine/storage/SimilarityIndex.h>

#include <algorithm>

namespace qrv {

namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;
constexpr std::size_t valueCount = std::size_t{1} << 16;
/// Of 200,000 contents that have nothing in common, one agrees with a given one in two features
/// with a chance of 1 to 300; in one feature, 40 do.
constexpr std::size_t fewestAgreeing = 2;
/// The copies of one template all share features; any of the newest is as good as the rest.
constexpr std::size_t mostOfFeature = 32;

}  // namespace

SimilarityIndex::SimilarityIndex() : newest_(Sketch::featureCount * valueCount, none) {
}

std::uint32_t& SimilarityIndex::newest(std::size_t feature, std::uint16_t value) {
    return newest_[feature * valueCount + value];
}

std::uint32_t SimilarityIndex::add(const Sketch& sketch) {
    const std::uint32_t number = size();
    Links links{};
    for (std::size_t at = 0; at < Sketch::featureCount; ++at) {
        std::uint32_t& newestOne = newest(at, sketch.features[at]);
        links[at] = newestOne;
        newestOne = number;
    }
    sketches_.push_back(sketch);
    links_.push_back(links);
    return number;
}

// Those that share any feature, once for each that they share.
std::vector<std::uint32_t> SimilarityIndex::candidates(const Sketch& sketch) const {
    std::vector<std::uint32_t> numbers;
    for (std::size_t at = 0; at < Sketch::featureCount; ++at) {
        std::uint32_t number = newest_[at * valueCount + sketch.features[at]];
        for (std::size_t count = 0; number != none && count < mostOfFeature; ++count) {
            numbers.push_back(number);
            number = links_[number][at];
        }
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

std::vector<SimilarityIndex::Match> SimilarityIndex::mostSimilar(const Sketch& sketch,
                                                                 std::size_t atMost) const {
    std::vector<std::uint32_t> numbers = candidates(sketch);
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    std::vector<Match> matches;
    for (const std::uint32_t number : numbers) {
        const std::size_t agreeing = agreement(sketch, sketches_[number]);
        if (agreeing >= fewestAgreeing)
            matches.push_back({.number = number, .agreement = agreeing});
    }
    const auto isBetter = [](const Match& one, const Match& other) {
        return one.agreement != other.agreement ? one.agreement > other.agreement
                                                : one.number > other.number;
    };
    const auto end =
        matches.begin() + std::min(std::ssize(matches), static_cast<std::ptrdiff_t>(atMost));
    std::partial_sort(matches.begin(), end, matches.end(), isBetter);
    matches.erase(end, matches.end());
    return matches;
}

}  // namespace qrv
