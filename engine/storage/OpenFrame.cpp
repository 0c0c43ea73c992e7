#include <engine/base/Translation.h>
#include <engine/storage/FramePieces.h>
#include <engine/storage/OpenFrame.h>
#include <engine/storage/Zstd.h>

#include <cstdint>
#include <string_view>
#include <utility>

namespace qrv {

namespace {

class TablePieces : public FramePieces {
public:
    TablePieces(std::shared_ptr<Database> database, std::int64_t frame)
        : database_(std::move(database)),
          pieces_(database_->prepare(
              "SELECT position, bytes FROM pieces WHERE frame = ? ORDER BY position")) {
        pieces_.bind(frame);
    }

    Expected<std::string_view> next() override {
        if (!pieces_.step() || pieces_.integer(0) != piecesRead_)
            return std::string_view();
        ++piecesRead_;
        return pieces_.bytes(1);
    }
    // The step behind the last piece also lets go of the lock on the file.
    bool goesOn() override { return pieces_.step(); }

private:
    std::shared_ptr<Database> database_;
    Statement pieces_;
    std::int64_t piecesRead_ = 0;
};

Expected<void> checkExtent(Database& database, const Frame& frame) {
    Statement extent = database.prepare(
        "SELECT coalesce(sum(length(bytes)), 0), coalesce(max(length(bytes)), 0)"
        " FROM pieces WHERE frame = ?");
    extent.bind(frame.number);
    extent.step();
    const std::int64_t storedBytes = extent.integer(0);
    const std::int64_t longestPiece = extent.integer(1);
    if (storedBytes == 0)
        return damagedFrame(database, frame, tr(L"its contents are missing"));
    if (longestPiece > pieceBytes || frame.sizeBytes / mostBytesOfOne > storedBytes)
        return damagedFrame(database, frame, tr(L"its size is impossible"));
    return {};
}

}  // namespace

Expected<std::unique_ptr<FrameReader>> openFrame(std::shared_ptr<Database> database,
                                                 const Frame& frame,
                                                 std::shared_ptr<const Bytes> base,
                                                 FrameReader::Check check) {
    if (Expected<void> extent = checkExtent(*database, frame); !extent)
        return std::move(extent).error();
    const OdString path = database->path();
    return std::make_unique<FrameReader>(
        std::make_unique<TablePieces>(std::move(database), frame.number),
        FrameName{.digest = frame.digest, .sizeBytes = frame.sizeBytes, .path = path},
        std::move(base), check);
}

}  // namespace qrv
