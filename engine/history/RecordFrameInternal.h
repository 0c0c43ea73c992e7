#pragma once

#include <common/base/Expected.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

struct ZSTD_CCtx_s;

namespace qrv {

/// Compresses a record that comes piece by piece, in two MiB of memory: of a commit of many files
/// it is mostly digits, of which half the room is left.
class RecordFrame {
public:
    using Sink = std::function<void(std::span<const char> bytes)>;

    explicit RecordFrame(Sink sink);
    ~RecordFrame();
    RecordFrame(const RecordFrame&) = delete;
    RecordFrame& operator=(const RecordFrame&) = delete;

    void add(std::string_view bytes);
    void finish();

private:
    struct Free {
        void operator()(ZSTD_CCtx_s* context) const;
    };
    void compress(std::string_view bytes, bool isEnd);

    Sink sink_;
    std::unique_ptr<ZSTD_CCtx_s, Free> context_;
    std::string piece_;
};

/// Whether these bytes of a file are a compressed record.
bool isRecordFrame(std::string_view file);

/// The record in the bytes of a file of one, compressed or not. Fails for a frame that is damaged,
/// or of more than `mostBytes`.
Expected<std::string> recordIn(std::string_view file, std::size_t mostBytes);

}  // namespace qrv
