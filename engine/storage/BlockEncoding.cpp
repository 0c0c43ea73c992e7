#include <engine/storage/BlockEncoding.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

// A frame that saves less than this many hundredths only costs time whenever it is read.
constexpr std::int64_t worthPercent = 97;
// A difference that saves less than a tenth only makes the chain longer.
constexpr std::int64_t differenceWorthPercent = 90;
// A difference this many times smaller than the contents is kept without a look at what they take
// alone.
constexpr std::int64_t clearlyWorthFactor = 16;
constexpr std::size_t sampleBytes = 16UL << 10;
constexpr std::size_t sampleCount = 4;

bool isAtMost(std::int64_t bytes, std::int64_t percent, std::int64_t of) {
    return bytes * 100 <= of * percent;
}

}  // namespace

bool isWorthCompressing(std::span<const char> contents) {
    if (contents.size() <= sampleBytes * sampleCount)
        return true;
    std::int64_t compressed = 0;
    for (std::size_t sample = 0; sample < sampleCount; ++sample) {
        const std::size_t offset = (contents.size() - sampleBytes) / (sampleCount - 1) * sample;
        const Expected<Bytes> frame =
            compressFrame(contents.subspan(offset, sampleBytes), {}, Effort::quick);
        if (!frame)
            return true;
        compressed += frame->size();
    }
    return isAtMost(compressed, worthPercent, sampleBytes * sampleCount);
}

Expected<EncodedBlock> encodeAlone(std::span<const char> contents, Effort effort) {
    if (!isWorthCompressing(contents))
        return EncodedBlock();
    Expected<Bytes> frame = compressFrame(contents, {}, effort);
    if (!frame)
        return std::move(frame).error();
    if (!isAtMost(frame->size(), worthPercent, std::ssize(contents)))
        return EncodedBlock();
    return EncodedBlock{.kind = BlockKind::frame, .bytes = std::move(*frame)};
}

Expected<std::optional<EncodedBlock>> encodeDifference(std::span<const char> contents,
                                                       std::span<const char> base, Effort effort) {
    Expected<Bytes> difference = compressFrame(contents, base, effort);
    if (!difference)
        return std::move(difference).error();
    if (difference->size() > std::ssize(contents) / clearlyWorthFactor) {
        const Expected<EncodedBlock> alone = encodeAlone(contents, effort);
        if (!alone)
            return alone.error();
        const std::int64_t aloneBytes =
            alone->kind == BlockKind::raw ? std::ssize(contents) : alone->bytes.size();
        if (!isAtMost(difference->size(), differenceWorthPercent, aloneBytes))
            return std::optional<EncodedBlock>();
    }
    return std::optional(
        EncodedBlock{.kind = BlockKind::difference, .bytes = std::move(*difference)});
}

}  // namespace qrv
