#include <engine/history/History.h>
#include <engine/history/LinesInternal.h>
#include <engine/history/RowsInternal.h>
#include <engine/history/SchemaInternal.h>

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

namespace qrv {

namespace {

/// Files at one end, nothing for those that are gone.
using Touched = std::map<RelativePath, std::optional<TreeFile>>;

std::optional<TreeFile> fileOf(FileDelta delta) {
    if (delta.url.isEmpty())
        return std::nullopt;
    return TreeFile{std::move(delta.url), delta.sizeBytes};
}

/// The version at the end of each file that a commit of the line behind `base` touched.
class TouchedFiles {
public:
    TouchedFiles(Database& database, FirstParents& line, std::int64_t base)
        : database_(database),
          rows_(database.prepare(
              "SELECT path, url, previous_path, size, number FROM lines JOIN changes USING "
              "(number) "
              "WHERE line = ? AND number > ? AND number <= ? ORDER BY number DESC")) {
        for (std::size_t index = 0; const std::optional<LinePiece> piece = line.piece(index);
             ++index) {
            if (piece->last <= base)
                break;
            add(*piece, base);
        }
    }

    Touched take() && { return std::move(files_); }

private:
    void add(const LinePiece& piece, std::int64_t base) {
        rows_.bind(piece.line, std::max(base, piece.line - 1), piece.last);
        std::int64_t number = 0;
        while (rows_.step()) {
            if (rows_.integer(4) != number)
                removeRenamed();
            number = rows_.integer(4);
            FileDelta delta = toDelta(CheckedRow(database_, rows_));
            if (delta.previousPath)
                renamed_.push_back(std::move(*delta.previousPath));
            RelativePath path = delta.path;
            // The newest commit decides.
            files_.try_emplace(std::move(path), fileOf(std::move(delta)));
        }
        removeRenamed();
    }

    /// After all of its commit, which may have put another file there.
    void removeRenamed() {
        for (RelativePath& path : renamed_)
            files_.try_emplace(std::move(path), std::nullopt);
        renamed_.clear();
    }

    Database& database_;
    Statement rows_;
    Touched files_;
    std::vector<RelativePath> renamed_;
};

/// Finds single files of one commit.
class FileLookup {
public:
    FileLookup(Database& database, FirstParents& line)
        : database_(database),
          line_(line),
          changes_(database.prepare("SELECT path, url, previous_path, size, number FROM changes "
                                    "WHERE path = ? ORDER BY number DESC")),
          renames_(database.prepare("SELECT number FROM changes WHERE previous_path = ? AND "
                                    "previous_path <> '' ORDER BY number DESC")) {}

    std::optional<TreeFile> find(const OdString& path) {
        changes_.bind(path);
        while (changes_.step()) {
            const std::int64_t number = CheckedRow(database_, changes_).number(4);
            if (!line_.contains(number))
                continue;
            // It went by a later commit that does not name it but as the old path.
            if (isRenamedAfter(number, path))
                return std::nullopt;
            return fileOf(toDelta(CheckedRow(database_, changes_)));
        }
        return std::nullopt;
    }

private:
    bool isRenamedAfter(std::int64_t number, const OdString& path) {
        renames_.bind(path);
        while (renames_.step()) {
            const std::int64_t renamed = CheckedRow(database_, renames_).number(0);
            if (renamed <= number)
                return false;
            if (line_.contains(renamed))
                return true;
        }
        return false;
    }

    Database& database_;
    FirstParents& line_;
    Statement changes_;
    Statement renames_;
};

/// Gives each of the one side the version on the other, where that has not touched it as it is in
/// `base`.
void complete(const Touched& one, Touched& other, FileLookup& base) {
    for (const auto& [path, file] : one) {
        if (!other.contains(path))
            other.emplace(path, base.find(path));
    }
}

bool areAlike(const std::optional<TreeFile>& one, const std::optional<TreeFile>& other) {
    return one.has_value() == other.has_value() && (!one || one->contents == other->contents);
}

std::vector<TreeChange> changesOf(Touched& before, Touched& after) {
    std::vector<TreeChange> changes;
    for (auto& [path, file] : before) {
        std::optional<TreeFile>& other = after.at(path);
        if (!areAlike(file, other))
            changes.push_back({path, std::move(file), std::move(other)});
    }
    return changes;
}

bool hasLines(Database& database) {
    return database.schemaVersion() >= layoutWithPackedUrls;
}

std::int64_t numberOrZero(Database& database, const OdString& hash) {
    return hash.isEmpty() ? 0 : numberOf(database, hash);
}

}  // namespace

std::vector<TreeChange> History::difference(const OdString& before, const OdString& after) {
    if (!hasLines(*database_))
        return changesBetween(tree(before), tree(after));
    FirstParents one(*database_, numberOrZero(*database_, before));
    FirstParents other(*database_, numberOrZero(*database_, after));
    const std::int64_t base = lastInCommon(one, other);
    Touched mine = TouchedFiles(*database_, one, base).take();
    Touched theirs = TouchedFiles(*database_, other, base).take();
    FirstParents lineOfBase(*database_, base);
    FileLookup lookup(*database_, lineOfBase);
    complete(mine, theirs, lookup);
    complete(theirs, mine, lookup);
    return changesOf(mine, theirs);
}

bool History::holds(const OdString& hash, const OdString& path,
                    const std::function<bool(const OdString& path)>& isGone) {
    const auto isGoneFrom = [&](const OdString& file) {
        return !fileAt(hash, file) || (isGone && isGone(file));
    };
    if (!path.isEmpty() && !isGoneFrom(path))
        return true;
    Statement below = database_->prepare(
        "SELECT DISTINCT path FROM changes WHERE path > ? AND path < ? ORDER BY path");
    // "0" follows "/", and behind all texts come bytes.
    if (path.isEmpty())
        below.bind(OdString(), std::string_view());
    else
        below.bind(path + L'/', path + L'0');
    while (below.step()) {
        if (!isGoneFrom(CheckedRow(*database_, below).path(0)))
            return true;
    }
    return false;
}

std::optional<TreeFile> History::fileAt(const OdString& hash, const OdString& path) {
    if (!hasLines(*database_)) {
        const Tree files = tree(hash);
        const TreeFile* const file = fileIn(files, path);
        return file == nullptr ? std::nullopt : std::optional(*file);
    }
    FirstParents line(*database_, numberOrZero(*database_, hash));
    return FileLookup(*database_, line).find(path);
}

}  // namespace qrv
