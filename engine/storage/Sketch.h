#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace qrv {

/// Contents in 24 bytes, so that similar ones are found without reading them: of two contents about
/// as many features agree as the share of what they have in common. docs/formats/sketch.md tells
/// how a sketch is made and how well it finds.
struct Sketch {
    static constexpr std::size_t featureCount = 12;
    static constexpr std::size_t byteCount = featureCount * sizeof(std::uint16_t);

    std::array<std::uint16_t, featureCount> features{};

    friend bool operator==(const Sketch&, const Sketch&) = default;
};

/// How many features are the same in both, from 0 to 12.
std::size_t agreement(const Sketch& one, const Sketch& other);

/// As it is written to files.
std::array<char, Sketch::byteCount> bytesOf(const Sketch& sketch);
Sketch sketchOf(std::span<const char, Sketch::byteCount> bytes);

/// Contents that are shorter have no sketch: a pack compresses them together with their neighbours
/// anyway.
inline constexpr std::int64_t shortestSketchedBytes = 4096;

/// Makes the sketch of contents that come piece by piece, in one pass and without memory for them.
class Sketching {
public:
    Sketching();

    /// The next piece.
    void add(std::span<const char> bytes);
    /// Nothing for contents that are too short, and for those in which too little differs to tell
    /// them from others: a picture in one colour, a file of zeros.
    std::optional<Sketch> finish();

    /// The sketch of contents that are all there.
    static std::optional<Sketch> of(std::span<const char> contents);

private:
    static constexpr std::size_t samplesAtOnce = 256;

    void takeSamples();

    std::array<std::uint64_t, Sketch::featureCount> largest_{};
    std::array<std::uint64_t, samplesAtOnce> samples_{};
    std::size_t sampleCount_ = 0;
    std::uint64_t lastSample_ = 0;
    std::uint64_t hash_ = 0;
    std::int64_t sizeBytes_ = 0;
    std::int64_t sampledInAll_ = 0;
};

}  // namespace qrv
