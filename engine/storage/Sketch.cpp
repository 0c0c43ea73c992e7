#include <engine/storage/Sketch.h>

#include <algorithm>

namespace qrv {

namespace {

/// Well mixed numbers in a fixed order (splitmix64).
class Numbers {
public:
    constexpr std::uint64_t next() {
        state_ += 0x9e3779b97f4a7c15;
        return mixed(state_);
    }

    static constexpr std::uint64_t mixed(std::uint64_t number) {
        number = (number ^ (number >> 30)) * 0xbf58476d1ce4e5b9;
        number = (number ^ (number >> 27)) * 0x94d049bb133111eb;
        return number ^ (number >> 31);
    }

private:
    std::uint64_t state_ = 0;
};

/// An order of all samples: the one whose product is the largest comes last.
struct Order {
    std::uint64_t factor = 0;
    std::uint64_t summand = 0;
};

struct Constants {
    std::array<std::uint64_t, 256> ofByte{};
    std::array<Order, Sketch::featureCount> orders{};
};

constexpr Constants makeConstants() {
    Constants constants;
    Numbers numbers;
    for (std::uint64_t& number : constants.ofByte)
        number = numbers.next();
    for (Order& order : constants.orders) {
        order.factor = numbers.next() | 1;
        order.summand = numbers.next();
    }
    return constants;
}

constexpr Constants constants = makeConstants();

// One place in 64 is a sample: so contents of 4 KiB have some sixty.
constexpr std::uint64_t samplesBelow = std::uint64_t{1} << 58;
// Two contents of a few samples agree, or do not, by chance.
constexpr std::int64_t fewestSamples = 16;

}  // namespace

std::size_t agreement(const Sketch& one, const Sketch& other) {
    std::size_t count = 0;
    for (std::size_t at = 0; at < Sketch::featureCount; ++at)
        count += one.features[at] == other.features[at] ? 1 : 0;
    return count;
}

std::array<char, Sketch::byteCount> bytesOf(const Sketch& sketch) {
    std::array<char, Sketch::byteCount> bytes{};
    for (std::size_t at = 0; at < Sketch::featureCount; ++at) {
        bytes[2 * at] = static_cast<char>(sketch.features[at] & 0xFF);
        bytes[2 * at + 1] = static_cast<char>(sketch.features[at] >> 8);
    }
    return bytes;
}

Sketch sketchOf(std::span<const char, Sketch::byteCount> bytes) {
    const auto byteAt = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
    Sketch sketch;
    for (std::size_t at = 0; at < Sketch::featureCount; ++at)
        sketch.features[at] = static_cast<std::uint16_t>(byteAt(2 * at) | byteAt(2 * at + 1) << 8);
    return sketch;
}

Sketching::Sketching() = default;

// The hash of the 32 bytes before each place: an older one is shifted out. The same few bytes over
// and over give the same sample over and over, which counts once.
void Sketching::add(std::span<const char> bytes) {
    std::uint64_t hash = hash_;
    for (const char byte : bytes) {
        hash = (hash << 2) + constants.ofByte[static_cast<unsigned char>(byte)];
        if (hash >= samplesBelow || hash == lastSample_)
            continue;
        lastSample_ = hash;
        samples_[sampleCount_++] = hash;
        if (sampleCount_ == samplesAtOnce)
            takeSamples();
    }
    hash_ = hash;
    sizeBytes_ += std::ssize(bytes);
}

// Of the samples in any order that has nothing to do with the contents, those of two contents end
// with the same one as often as the contents share samples.
void Sketching::takeSamples() {
    for (std::size_t at = 0; at < Sketch::featureCount; ++at) {
        const Order order = constants.orders[at];
        std::uint64_t largest = largest_[at];
        for (std::size_t sample = 0; sample < sampleCount_; ++sample)
            largest = std::max(largest, samples_[sample] * order.factor + order.summand);
        largest_[at] = largest;
    }
    sampledInAll_ += static_cast<std::int64_t>(sampleCount_);
    sampleCount_ = 0;
}

std::optional<Sketch> Sketching::finish() {
    takeSamples();
    if (sizeBytes_ < shortestSketchedBytes || sampledInAll_ < fewestSamples)
        return std::nullopt;
    Sketch sketch;
    for (std::size_t at = 0; at < Sketch::featureCount; ++at)
        sketch.features[at] = static_cast<std::uint16_t>(Numbers::mixed(largest_[at]));
    return sketch;
}

std::optional<Sketch> Sketching::of(std::span<const char> contents) {
    Sketching sketching;
    sketching.add(contents);
    return sketching.finish();
}

}  // namespace qrv
