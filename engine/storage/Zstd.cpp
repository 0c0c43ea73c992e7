#include <engine/base/Translation.h>
#include <engine/storage/Zstd.h>

#include <zstd.h>

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

namespace qrv {

namespace {

// Above the higher one, time grows much faster than the saving: for a drawing of 5 MiB, level 12
// takes three times as long for 1.5 % less. The lower one takes a sixth of the time, for 3 % more,
// or 1 % where there is a base.
constexpr int levelOf(Effort effort) {
    return effort == Effort::quick ? 3 : 9;
}

// Without a base, matches from farther away are rare, and the reader needs memory for all of it.
constexpr int longestPlainWindowLog = 27;
// What comes piece by piece may be of any length, and is to take little memory.
constexpr int longestStreamedWindowLog = 25;
constexpr int shortestWindowLog = 10;
constexpr int longestWindowLog = 31;
static_assert(longestSpanBytes == std::int64_t{1} << longestWindowLog);

// The logarithm of the window that spans `bytes`.
int windowLogFor(std::int64_t bytes, int atMost) {
    const auto last = static_cast<std::uint64_t>(std::max<std::int64_t>(bytes, 1) - 1);
    return std::clamp(static_cast<int>(std::bit_width(last)), shortestWindowLog, atMost);
}

ErrorMessage notCompressed(std::size_t result) {
    return {OdString::format(tr(L"The contents cannot be compressed: %ls"),
                             OdString(ZSTD_getErrorName(result)))};
}

// The parameters lie in their ranges, so these calls cannot fail.
void setUp(ZSTD_CCtx* context, std::int64_t sizeBytes, int windowLog, Effort effort) {
    ZSTD_CCtx_setParameter(context, ZSTD_c_compressionLevel, levelOf(effort));
    ZSTD_CCtx_setParameter(context, ZSTD_c_windowLog, windowLog);
    ZSTD_CCtx_setParameter(context, ZSTD_c_enableLongDistanceMatching, 1);
    ZSTD_CCtx_setPledgedSrcSize(context, static_cast<unsigned long long>(sizeBytes));
}

ZSTD_CCtx* newContext() {
    ZSTD_CCtx* const context = ZSTD_createCCtx();
    if (context == nullptr)
        throw std::bad_alloc();
    return context;
}

}  // namespace

Expected<Bytes> compressFrame(std::span<const char> contents, std::span<const char> base,
                              Effort effort) {
    const std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> context(newContext(),
                                                                       &ZSTD_freeCCtx);
    const auto size = static_cast<std::int64_t>(contents.size());
    const auto span = size + static_cast<std::int64_t>(base.size());
    setUp(context.get(), size,
          windowLogFor(span, base.empty() ? longestPlainWindowLog : longestWindowLog), effort);
    ZSTD_CCtx_refPrefix(context.get(), base.data(), base.size());
    Expected<Bytes> frame =
        Bytes::ofSize(static_cast<std::int64_t>(ZSTD_compressBound(contents.size())));
    if (!frame)
        return frame;
    const std::size_t result =
        ZSTD_compress2(context.get(), frame->span().data(), frame->span().size(), contents.data(),
                       contents.size());
    if (ZSTD_isError(result) != 0)
        return notCompressed(result);
    frame->cutTo(result);
    return frame;
}

void FrameWriter::Free::operator()(ZSTD_CCtx_s* context) const {
    ZSTD_freeCCtx(context);
}

FrameWriter::FrameWriter(std::int64_t sizeBytes, std::int64_t atOnce, Sink sink, Effort effort)
    : sink_(std::move(sink)),
      context_(newContext()),
      pieceBytes_(std::min(static_cast<std::size_t>(atOnce),
                           ZSTD_compressBound(static_cast<std::size_t>(sizeBytes)))) {
    setUp(context_.get(), sizeBytes, windowLogFor(sizeBytes, longestStreamedWindowLog), effort);
    piece_.reset(new char[pieceBytes_]);
}

Expected<void> FrameWriter::add(std::span<const char> bytes) {
    return compress(bytes, false);
}

Expected<void> FrameWriter::finish() {
    Expected<void> ended = compress({}, true);
    if (ended && filled_ > 0)
        handOver();
    return ended;
}

Expected<void> FrameWriter::compress(std::span<const char> bytes, bool isEnd) {
    ZSTD_inBuffer input = {bytes.data(), bytes.size(), 0};
    for (;;) {
        ZSTD_outBuffer output = {piece_.get(), pieceBytes_, filled_};
        const std::size_t left = ZSTD_compressStream2(context_.get(), &output, &input,
                                                      isEnd ? ZSTD_e_end : ZSTD_e_continue);
        if (ZSTD_isError(left) != 0)
            return notCompressed(left);
        filled_ = output.pos;
        if (isEnd ? left == 0 : input.pos == input.size)
            return {};
        if (filled_ == pieceBytes_)
            handOver();
    }
}

void FrameWriter::handOver() {
    sink_({piece_.get(), filled_});
    filled_ = 0;
}

void FrameDecoder::Free::operator()(ZSTD_DCtx_s* context) const {
    ZSTD_freeDCtx(context);
}

FrameDecoder::FrameDecoder(std::int64_t sizeBytes, std::span<const char> base)
    : sizeBytes_(sizeBytes), context_(ZSTD_createDCtx()) {
    if (context_ == nullptr)
        throw std::bad_alloc();
    const int atMost = base.empty() ? longestPlainWindowLog : longestWindowLog;
    ZSTD_DCtx_setParameter(context_.get(), ZSTD_d_windowLogMax, windowLogFor(sizeBytes, atMost));
    ZSTD_DCtx_refPrefix(context_.get(), base.data(), base.size());
}

Expected<FrameDecoder::Step> FrameDecoder::step(std::span<const char> frame,
                                                std::span<char> contents) {
    if (!isBegun_) {
        const unsigned long long size = ZSTD_getFrameContentSize(frame.data(), frame.size());
        if (size == ZSTD_CONTENTSIZE_ERROR)
            return ErrorMessage{tr(L"it is no frame")};
        if (size != static_cast<unsigned long long>(sizeBytes_))
            return ErrorMessage{tr(L"the size in its frame is another one")};
    }
    isBegun_ = true;
    ZSTD_inBuffer input = {frame.data(), frame.size(), 0};
    ZSTD_outBuffer output = {contents.data(), contents.size(), 0};
    const std::size_t result = ZSTD_decompressStream(context_.get(), &output, &input);
    if (ZSTD_isError(result) != 0)
        return ErrorMessage{OdString(ZSTD_getErrorName(result))};
    return Step{.read = input.pos, .written = output.pos, .isEnd = result == 0};
}

}  // namespace qrv
