#include <engine/base/Digest.h>
#include <engine/base/Hex.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/database/Schema.h>
#include <engine/storage/FrameTable.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

constexpr int layoutVersion = 1;
constexpr std::int64_t longestContents = std::int64_t{1} << 47;

constexpr SchemaEntry tables[] = {
    {"frames", R"(CREATE TABLE frames (
    number INTEGER PRIMARY KEY,
    digest BLOB NOT NULL UNIQUE,
    size INTEGER NOT NULL,
    base INTEGER REFERENCES frames (number)
) STRICT)"},
    {"frames_by_base", "CREATE INDEX frames_by_base ON frames (base) WHERE base IS NOT NULL"},
    {"pieces", R"(CREATE TABLE pieces (
    frame INTEGER NOT NULL,
    position INTEGER NOT NULL,
    bytes BLOB NOT NULL,
    UNIQUE (frame, position)
) STRICT)"},
};

}  // namespace

FrameTable::FrameTable(std::shared_ptr<Database> database, Database::Access access,
                       std::int64_t applicationId)
    : applicationId_(applicationId),
      database_(std::move(database)),
      isEmpty_(database_->schemaVersion() == 0) {
    if (isEmpty_ && access == Database::Access::create)
        makeTables();
    if (!isEmpty_)
        checkLayout();
}

void FrameTable::makeTables() {
    // Otherwise the file would never become smaller; it cannot be switched on later.
    database_->execute("PRAGMA auto_vacuum = FULL");
    DatabaseTransaction transaction(*database_);
    isEmpty_ = false;
    // Another process may have been quicker.
    if (database_->schemaVersion() != 0)
        return;
    // Somebody else's tables are not to be mixed with ours.
    requireSchema({}, *database_);
    makeSchema(*database_, tables);
    database_->execute(("PRAGMA application_id = " + std::to_string(applicationId_)).c_str());
    database_->setSchemaVersion(layoutVersion);
    transaction.commit();
}

void FrameTable::checkLayout() {
    const OdString path = printable(database_->path());
    const std::int64_t version = database_->schemaVersion();
    if (version > layoutVersion)
        throw DatabaseError(
            OdString::format(tr(L"'%ls' was written by a newer version of this program"), path));
    Statement kind = database_->prepare("PRAGMA application_id");
    kind.step();
    if (version < layoutVersion || kind.integer(0) != applicationId_)
        throw DatabaseError(OdString::format(tr(L"'%ls' is a file of another kind"), path));
    requireSchema(tables, *database_);
}

std::optional<Frame> FrameTable::find(const std::string& digest) {
    if (isEmpty_)
        return std::nullopt;
    Statement row =
        database_->prepare("SELECT number, digest, size, base FROM frames WHERE digest = ?");
    const std::string bytes = fromHex(digest);
    row.bind(std::string_view(bytes));
    if (!row.step())
        return std::nullopt;
    return frameOf(row);
}

std::optional<Frame> FrameTable::find(std::int64_t number) {
    std::vector<Frame> found = framesWhere("number = ?", number);
    if (found.empty())
        return std::nullopt;
    return std::move(found.front());
}

std::vector<Frame> FrameTable::all() {
    return framesWhere("number > ?", 0);
}

std::vector<Frame> FrameTable::dependentsOf(const Frame& frame) {
    return framesWhere("base = ?", frame.number);
}

std::vector<Frame> FrameTable::framesWhere(const char* condition, std::int64_t value) {
    if (isEmpty_)
        return {};
    const std::string sql = std::string("SELECT number, digest, size, base FROM frames WHERE ") +
                            condition + " ORDER BY number";
    Statement rows = database_->prepare(sql.c_str());
    rows.bind(value);
    std::vector<Frame> found;
    while (rows.step()) {
        Frame frame = frameOf(rows);
        // In a file that was made for it, the same rows come again and again.
        if (!found.empty() && frame.number <= found.back().number)
            throw impossible(frame.number);
        found.push_back(std::move(frame));
    }
    return found;
}

Frame FrameTable::frameOf(const Statement& row) const {
    Frame frame{.number = row.integer(0),
                .digest = toHex(row.bytes(1)),
                .sizeBytes = row.integer(2),
                .base = std::nullopt};
    if (!row.isNull(3))
        frame.base = row.integer(3);
    // As a base is always older, no chain leads back to itself.
    const bool isPossible = frame.number > 0 && frame.digest.size() == digestLength &&
                            frame.sizeBytes >= 0 && frame.sizeBytes <= longestContents &&
                            (!frame.base || (*frame.base > 0 && *frame.base < frame.number));
    if (!isPossible)
        throw impossible(frame.number);
    return frame;
}

DatabaseError FrameTable::impossible(std::int64_t number) const {
    return DatabaseError(OdString::format(tr(L"'%ls' is damaged: its entry %i cannot be"),
                                          printable(database_->path()), number));
}

std::int64_t FrameTable::storedBytes(const Frame& frame) {
    Statement sum =
        database_->prepare("SELECT coalesce(sum(length(bytes)), 0) FROM pieces WHERE frame = ?");
    sum.bind(frame.number);
    sum.step();
    return sum.integer(0);
}

std::int64_t FrameTable::nextNumber() {
    Statement last = database_->prepare("SELECT coalesce(max(number), 0) + 1 FROM frames");
    last.step();
    return last.integer(0);
}

void FrameTable::add(const Frame& frame) {
    const std::string digest = fromHex(frame.digest);
    database_->prepare("INSERT INTO frames (number, digest, size) VALUES (?, ?, ?)")
        .run(frame.number, std::string_view(digest), frame.sizeBytes);
    if (frame.base)
        changeBase(frame.number, frame.base);
}

void FrameTable::changeBase(std::int64_t number, std::optional<std::int64_t> base) {
    Statement update = database_->prepare("UPDATE frames SET base = ? WHERE number = ?");
    if (base)
        update.run(*base, number);
    else
        update.run(nullptr, number);
}

void FrameTable::remove(std::int64_t number) {
    removePieces(number);
    database_->prepare("DELETE FROM frames WHERE number = ?").run(number);
}

void FrameTable::addPiece(std::int64_t number, std::int64_t position, std::span<const char> bytes) {
    database_->prepare("INSERT INTO pieces (frame, position, bytes) VALUES (?, ?, ?)")
        .run(number, position, std::string_view(bytes.data(), bytes.size()));
}

void FrameTable::addPieces(std::int64_t number, std::span<const char> bytes) {
    for (std::int64_t position = 0; !bytes.empty(); ++position) {
        const std::span<const char> piece =
            bytes.first(std::min(bytes.size(), static_cast<std::size_t>(pieceBytes)));
        addPiece(number, position, piece);
        bytes = bytes.subspan(piece.size());
    }
}

void FrameTable::removePieces(std::int64_t number) {
    database_->prepare("DELETE FROM pieces WHERE frame = ?").run(number);
}

ErrorMessage damagedFrame(const Database& database, const Frame& frame, const OdString& cause) {
    return {OdString::format(tr(L"The version %ls in '%ls' is damaged: %ls"),
                             OdString::fromNarrow(frame.digest), printable(database.path()),
                             cause)};
}

}  // namespace qrv
