#pragma once

#include <common/base/Expected.h>
#include <engine/database/Database.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qrv {

/// A row of the table of frames.
struct Frame {
    std::int64_t number = 0;
    /// Of the contents.
    std::string digest;
    std::int64_t sizeBytes = 0;
    /// The number of the frame against whose contents this one was made, which is always an older
    /// one; without it the frame stands alone.
    std::optional<std::int64_t> base;

    friend bool operator==(const Frame&, const Frame&) = default;
};

/// How many bytes of a frame stand in one row, so that nobody needs all of it in memory.
inline constexpr std::int64_t pieceBytes = std::int64_t{16} << 20;

/// The rows of a SQLite file of frames, without a look at what is in the frames. Operations throw
/// `DatabaseError` when the file cannot be used, when it is of a newer layout or of another kind,
/// and when it holds a row that cannot be. Changes run inside a transaction of the caller.
class FrameTable {
public:
    /// `access` is how the file was opened: with `create` the tables are made where there are none
    /// yet. A file without tables has no rows. `applicationId` stands in the file's header, so that
    /// one kind is not taken for another. Other tables and indexes than these are refused.
    FrameTable(std::shared_ptr<Database> database, Database::Access access,
               std::int64_t applicationId);

    const std::shared_ptr<Database>& database() const { return database_; }

    std::optional<Frame> find(const std::string& digest);
    std::optional<Frame> find(std::int64_t number);
    /// Oldest first.
    std::vector<Frame> all();
    /// Those that were made against this one, oldest first.
    std::vector<Frame> dependentsOf(const Frame& frame);
    /// What the frame itself takes.
    std::int64_t storedBytes(const Frame& frame);

    std::int64_t nextNumber();
    void add(const Frame& frame);
    void changeBase(std::int64_t number, std::optional<std::int64_t> base);
    /// The pieces go first.
    void remove(std::int64_t number);
    /// Adds one piece, of at most `pieceBytes`.
    void addPiece(std::int64_t number, std::int64_t position, std::span<const char> bytes);
    void addPieces(std::int64_t number, std::span<const char> bytes);
    void removePieces(std::int64_t number);

private:
    void makeTables();
    void checkLayout();
    std::vector<Frame> framesWhere(const char* condition, std::int64_t value);
    Frame frameOf(const Statement& row) const;
    DatabaseError impossible(std::int64_t number) const;

    std::int64_t applicationId_;
    std::shared_ptr<Database> database_;
    bool isEmpty_ = false;
};

/// "The version 1d4… in 'plan.tf' is damaged: it ends too early"
ErrorMessage damagedFrame(const Database& database, const Frame& frame, const OdString& cause);

}  // namespace qrv
