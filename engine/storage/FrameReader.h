#pragma once

#include <common/base/Expected.h>
#include <engine/base/Bytes.h>
#include <engine/base/Digest.h>
#include <engine/storage/FramePieces.h>
#include <engine/storage/VersionReader.h>
#include <engine/storage/Zstd.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace qrv {

/// What is said of a frame to whoever reads it.
struct FrameName {
    /// Of the contents.
    std::string digest;
    std::int64_t sizeBytes = 0;
    /// Of the file in which it lies.
    OdString path;
};

/// Decodes one frame.
class FrameReader : public VersionReader {
public:
    /// The contents of a base need no look at their digest: when they are wrong, so is what is made
    /// of them, and that is looked at.
    enum class Check { digest, sizeOnly };

    /// `base` holds the contents of the frame's base, null where it has none.
    FrameReader(std::unique_ptr<FramePieces> pieces, FrameName name,
                std::shared_ptr<const Bytes> base, Check check);

    /// At the last byte, size and digest are compared, and it is seen to that nothing follows.
    Expected<std::size_t> read(std::span<char> buffer) override;
    std::int64_t sizeBytes() const override { return name_.sizeBytes; }

private:
    Expected<std::size_t> decode(std::span<char> buffer);
    Expected<void> nextPiece();
    Expected<void> checkEnd();
    ErrorMessage damaged(const OdString& cause) const;

    std::unique_ptr<FramePieces> pieces_;
    FrameName name_;
    std::shared_ptr<const Bytes> base_;
    FrameDecoder decoder_;
    // What is left of the current piece.
    std::string_view piece_;
    bool isEnd_ = false;
    bool isChecked_ = false;
    std::int64_t written_ = 0;
    std::optional<Digest> digest_;
};

/// All bytes that `contents` gives. Fails when it fails, or gives more or fewer than it says.
Expected<Bytes> readWhole(VersionReader& contents);

}  // namespace qrv
