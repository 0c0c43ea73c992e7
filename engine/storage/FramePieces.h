#pragma once

#include <common/base/Expected.h>

#include <string_view>

namespace qrv {

/// The bytes of one frame, piece by piece, from wherever they lie. May throw `DatabaseError`.
class FramePieces {
public:
    FramePieces() = default;
    FramePieces(const FramePieces&) = delete;
    FramePieces& operator=(const FramePieces&) = delete;
    virtual ~FramePieces() = default;

    /// The next bytes, which stay until the next call. Empty when there are none, or when the piece
    /// that would come now is missing. Fails when they cannot be read.
    virtual Expected<std::string_view> next() = 0;
    /// Whether anything lies behind the pieces that were given. Nothing is asked for afterwards.
    virtual bool goesOn() = 0;
};

}  // namespace qrv
