#include <engine/base/Translation.h>
#include <engine/history/LinesInternal.h>
#include <engine/history/RowsInternal.h>

#include <algorithm>
#include <map>

namespace qrv {

namespace {

constexpr const char* selectFirstParent =
    "SELECT parent FROM parents WHERE number = ? ORDER BY position LIMIT 1";

/// Gives the numbers of commits and their first parents, 0 for none, from the oldest commit on.
Statement selectFirstParents(Database& database) {
    return database.prepare(
        "SELECT number, ifnull((SELECT parent FROM parents WHERE parents.number = commits.number "
        "ORDER BY position LIMIT 1), 0) FROM commits ORDER BY number");
}

/// Tells the lines of commits that come one behind the other.
class LinesFromParents {
public:
    std::int64_t next(std::int64_t number, std::int64_t parent) {
        const auto last = lineByLast_.find(parent);
        const std::int64_t line = last == lineByLast_.end() ? number : last->second;
        if (last != lineByLast_.end())
            lineByLast_.erase(last);
        lineByLast_[number] = line;
        return line;
    }

private:
    /// From the last commit of each line.
    std::map<std::int64_t, std::int64_t> lineByLast_;
};

}  // namespace

FirstParents::FirstParents(Database& database, std::int64_t number)
    : database_(database),
      lineOfCommit_(database.prepare("SELECT line FROM lines WHERE number = ?")),
      firstParent_(database.prepare(selectFirstParent)) {
    if (number > 0)
        add(number);
}

void FirstParents::add(std::int64_t number) {
    lineOfCommit_.bind(number);
    const std::int64_t line =
        lineOfCommit_.step() ? CheckedRow(database_, lineOfCommit_).number(0) : 0;
    if (line < 1 || line > number)
        failDamaged(database_,
                    OdString::format(tr(L"commit %i is on no line of first parents"), number));
    pieces_.push_back({.line = line, .last = number});
}

bool FirstParents::findNext() {
    if (pieces_.empty())
        return false;
    const std::int64_t begin = pieces_.back().line;
    firstParent_.bind(begin);
    if (!firstParent_.step())
        return false;
    const std::int64_t parent = CheckedRow(database_, firstParent_).number(0);
    if (parent >= begin)
        failBuildsOn(database_, begin, parent);
    add(parent);
    return true;
}

std::optional<LinePiece> FirstParents::piece(std::size_t index) {
    while (index >= pieces_.size()) {
        if (!findNext())
            return std::nullopt;
    }
    return pieces_[index];
}

bool FirstParents::contains(std::int64_t number) {
    for (std::size_t index = 0; const std::optional<LinePiece> each = piece(index); ++index) {
        if (number > each->last)
            return false;
        if (number < each->line)
            continue;
        lineOfCommit_.bind(number);
        return lineOfCommit_.step() && lineOfCommit_.integer(0) == each->line;
    }
    return false;
}

std::int64_t lastInCommon(FirstParents& one, FirstParents& other) {
    std::size_t indexInOne = 0;
    std::size_t indexInOther = 0;
    for (;;) {
        const std::optional<LinePiece> mine = one.piece(indexInOne);
        const std::optional<LinePiece> theirs = other.piece(indexInOther);
        if (!mine || !theirs)
            return 0;
        if (mine->line == theirs->line)
            return std::min(mine->last, theirs->last);
        // Behind a line come only older ones.
        ++(mine->line > theirs->line ? indexInOne : indexInOther);
    }
}

void addLine(Database& database, std::int64_t number) {
    Statement parents = database.prepare(selectFirstParent);
    parents.bind(number);
    const std::int64_t parent = parents.step() ? parents.integer(0) : 0;
    Statement lasts = database.prepare(
        "SELECT line FROM lines AS mine WHERE number = ?1 AND "
        "(SELECT max(number) FROM lines WHERE line = mine.line) = ?1");
    lasts.bind(parent);
    const std::int64_t line = lasts.step() ? lasts.integer(0) : number;
    database.prepare("INSERT INTO lines VALUES (?, ?)").run(number, line);
}

void addAllLines(Database& database) {
    LinesFromParents lines;
    Statement commits = selectFirstParents(database);
    Statement insertion = database.prepare("INSERT INTO lines VALUES (?, ?)");
    while (commits.step())
        insertion.run(commits.integer(0), lines.next(commits.integer(0), commits.integer(1)));
}

std::int64_t firstWrongLine(Database& database) {
    LinesFromParents lines;
    Statement commits = selectFirstParents(database);
    Statement noted = database.prepare("SELECT line FROM lines WHERE number = ?");
    while (commits.step()) {
        const std::int64_t number = commits.integer(0);
        noted.bind(number);
        if (!noted.step() || noted.integer(0) != lines.next(number, commits.integer(1)))
            return number;
    }
    return 0;
}

}  // namespace qrv
