#pragma once

#include <common/base/Expected.h>
#include <engine/base/Bytes.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

struct ZSTD_CCtx_s;
struct ZSTD_DCtx_s;

namespace qrv {

// A frame is compressed contents in the zstd format, with the size of the contents in its header.
// One that was made against a base can only be read with the same base.

/// How long contents and base together may be, so that a match reaches from the one end to the
/// other.
inline constexpr std::int64_t longestSpanBytes = std::int64_t{1} << 31;
/// How many bytes of contents one byte of a frame can stand for at most: a block of 128 KiB takes
/// four bytes at least. A frame that claims more lies.
inline constexpr std::int64_t mostBytesOfOne = 1 << 15;

/// How long compressing may take.
enum class Effort {
    quick,     ///< for somebody who waits
    thorough,  ///< six times as long, for a few hundredths less
};

/// Compresses contents in one step; with a base, only what differs from it takes room. Both
/// together must not be longer than `longestSpanBytes`. Needs memory for the frame, in the worst
/// case as much as the contents. Fails when there is not enough.
Expected<Bytes> compressFrame(std::span<const char> contents, std::span<const char> base = {},
                              Effort effort = Effort::thorough);

/// Compresses contents of any length that come piece by piece, in some 100 MiB of memory.
class FrameWriter {
public:
    /// Takes the next bytes of the frame. An exception that it throws passes through.
    using Sink = std::function<void(std::span<const char> bytes)>;

    /// Gives the frame in pieces of `atOnce` bytes, and one shorter one at the end.
    FrameWriter(std::int64_t sizeBytes, std::int64_t atOnce, Sink sink,
                Effort effort = Effort::thorough);

    Expected<void> add(std::span<const char> bytes);
    /// Fails when not exactly `sizeBytes` were added.
    Expected<void> finish();

private:
    struct Free {
        void operator()(ZSTD_CCtx_s* context) const;
    };

    Expected<void> compress(std::span<const char> bytes, bool isEnd);
    void handOver();

    Sink sink_;
    std::unique_ptr<ZSTD_CCtx_s, Free> context_;
    std::unique_ptr<char[]> piece_;
    std::size_t pieceBytes_;
    std::size_t filled_ = 0;
};

/// Reads a frame that nobody vouches for. Takes memory for its window, which is checked first:
/// never more than the size of the contents, and without a base never more than 128 MiB.
class FrameDecoder {
public:
    /// The frame must be one of contents of `sizeBytes`. `base` is empty or what the frame was made
    /// against, and must outlive the decoder.
    FrameDecoder(std::int64_t sizeBytes, std::span<const char> base);

    struct Step {
        std::size_t read = 0;
        std::size_t written = 0;
        /// Whether the frame has ended. Nothing is read behind it.
        bool isEnd = false;
    };
    /// Takes bytes of the frame and writes contents. Neither all of the one is taken nor all of the
    /// other filled in one step. Fails when the frame is damaged, or not of contents of that size,
    /// and, after a few steps, when neither goes on.
    Expected<Step> step(std::span<const char> frame, std::span<char> contents);

private:
    struct Free {
        void operator()(ZSTD_DCtx_s* context) const;
    };

    std::int64_t sizeBytes_;
    bool isBegun_ = false;
    std::unique_ptr<ZSTD_DCtx_s, Free> context_;
};

}  // namespace qrv
