#include <engine/base/Translation.h>
#include <engine/history/RecordFrameInternal.h>

#include <zstd.h>

#include <algorithm>
#include <new>
#include <utility>

namespace qrv {

namespace {

constexpr int level = 3;
constexpr int windowLog = 20;
constexpr std::size_t pieceBytes = 1 << 16;
/// With which every frame begins. A record begins with "{".
constexpr std::string_view frameBegin = "\x28\xb5\x2f\xfd";

// Of these steps none fails for another reason than a lack of memory.
std::size_t require(std::size_t result) {
    if (ZSTD_isError(result) != 0)
        throw std::bad_alloc();
    return result;
}

ErrorMessage noRecord() {
    return {tr(L"it is no record of a commit")};
}

}  // namespace

void RecordFrame::Free::operator()(ZSTD_CCtx_s* context) const {
    ZSTD_freeCCtx(context);
}

RecordFrame::RecordFrame(Sink sink)
    : sink_(std::move(sink)), context_(ZSTD_createCCtx()), piece_(pieceBytes, '\0') {
    if (context_ == nullptr)
        throw std::bad_alloc();
    require(ZSTD_CCtx_setParameter(context_.get(), ZSTD_c_compressionLevel, level));
    require(ZSTD_CCtx_setParameter(context_.get(), ZSTD_c_windowLog, windowLog));
}

RecordFrame::~RecordFrame() = default;

void RecordFrame::add(std::string_view bytes) {
    compress(bytes, false);
}

void RecordFrame::finish() {
    compress({}, true);
}

void RecordFrame::compress(std::string_view bytes, bool isEnd) {
    ZSTD_inBuffer in = {bytes.data(), bytes.size(), 0};
    for (;;) {
        ZSTD_outBuffer out = {piece_.data(), piece_.size(), 0};
        const std::size_t left = require(
            ZSTD_compressStream2(context_.get(), &out, &in, isEnd ? ZSTD_e_end : ZSTD_e_continue));
        sink_({piece_.data(), out.pos});
        if (isEnd ? left == 0 : in.pos == in.size)
            return;
    }
}

bool isRecordFrame(std::string_view file) {
    return file.starts_with(frameBegin);
}

Expected<std::string> recordIn(std::string_view file, std::size_t mostBytes) {
    if (!isRecordFrame(file))
        return std::string(file);
    const std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> context(ZSTD_createDCtx(),
                                                                       &ZSTD_freeDCtx);
    if (context == nullptr)
        throw std::bad_alloc();
    require(ZSTD_DCtx_setParameter(context.get(), ZSTD_d_windowLogMax, windowLog));
    std::string record;
    std::string piece(pieceBytes, '\0');
    ZSTD_inBuffer in = {file.data(), file.size(), 0};
    for (;;) {
        ZSTD_outBuffer out = {piece.data(), piece.size(), 0};
        const std::size_t left = ZSTD_decompressStream(context.get(), &out, &in);
        const bool isStuck = out.pos == 0 && in.pos == in.size && left != 0;
        if (ZSTD_isError(left) != 0 || isStuck || record.size() + out.pos > mostBytes)
            return noRecord();
        record.append(piece, 0, out.pos);
        if (left == 0)
            break;
    }
    // Nothing may lie behind it.
    return in.pos == in.size ? Expected<std::string>(std::move(record)) : noRecord();
}

}  // namespace qrv
