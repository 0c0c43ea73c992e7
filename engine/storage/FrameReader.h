#pragma once

#include <common/base/Expected.h>
#include <engine/base/Bytes.h>
#include <engine/base/Digest.h>
#include <engine/database/Database.h>
#include <engine/storage/FrameTable.h>
#include <engine/storage/VersionReader.h>
#include <engine/storage/Zstd.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace qrv {

/// Decodes one frame. While it is read, other processes cannot write to the database.
class FrameReader : public VersionReader {
public:
    /// The contents of a base need no look at their digest: when they are wrong, so is what is made
    /// of them, and that is looked at.
    enum class Check { digest, sizeOnly };

    /// `base` holds the contents of the frame's base, null where it has none. Fails when the frame
    /// cannot be whole; memory for its contents is taken only after that. Throws `DatabaseError`.
    static Expected<std::unique_ptr<FrameReader>> open(std::shared_ptr<Database> database,
                                                       Frame frame,
                                                       std::shared_ptr<const Bytes> base,
                                                       Check check);

    /// At the last byte, size and digest are compared, and it is seen to that nothing follows.
    Expected<std::size_t> read(std::span<char> buffer) override;
    std::int64_t sizeBytes() const override { return frame_.sizeBytes; }

private:
    FrameReader(std::shared_ptr<Database> database, Frame frame, std::shared_ptr<const Bytes> base,
                Check check);

    Expected<void> checkExtent();
    Expected<std::size_t> decode(std::span<char> buffer);
    bool nextPiece();
    Expected<void> checkEnd();
    ErrorMessage damaged(const OdString& cause) const;

    std::shared_ptr<Database> database_;
    Frame frame_;
    std::shared_ptr<const Bytes> base_;
    FrameDecoder decoder_;
    Statement pieces_;
    std::int64_t piecesRead_ = 0;
    // What is left of the current piece; a view into the row.
    std::string_view piece_;
    bool isEnd_ = false;
    bool isChecked_ = false;
    std::int64_t written_ = 0;
    std::optional<Digest> digest_;
};

/// All bytes that `contents` gives. Fails when it fails, or gives more or fewer than it says.
Expected<Bytes> readWhole(VersionReader& contents);

}  // namespace qrv
