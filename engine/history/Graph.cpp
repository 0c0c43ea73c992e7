#include <engine/base/Translation.h>
#include <engine/history/History.h>
#include <engine/history/RowsInternal.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <unordered_map>
#include <utility>

// A parent has a smaller number than its child, which is asked of each. So walks go from higher
// numbers to lower ones, without recursion, and end also in a file that was changed by hand.
namespace qrv {

namespace {

/// For more than so many commits, one pass over the tables is quicker than a query for each.
constexpr std::size_t fewCommits = 1000;

/// The number of the parent in the row's column.
std::int64_t parentIn(const Database& database, const Statement& row, int column,
                      std::int64_t child) {
    const std::int64_t parent = CheckedRow(database, row).number(column);
    if (parent >= child)
        failBuildsOn(database, child, parent);
    return parent;
}

/// A commit that a walk comes to, with the marks of the places from which it was reached.
struct Step {
    std::int64_t number = 0;
    unsigned marks = 0;
};

/// Goes from some commits to all that they build on, each once, from the newest to the oldest.
class Walk {
public:
    explicit Walk(Database& database)
        : database_(database),
          parents_(database.prepare("SELECT parent FROM parents WHERE number = ?")) {}

    void startAt(std::int64_t number, unsigned mark) { waiting_[number] |= mark; }

    std::optional<Step> next() {
        if (waiting_.empty())
            return std::nullopt;
        const auto [number, marks] = *waiting_.begin();
        waiting_.erase(waiting_.begin());
        parents_.bind(number);
        while (parents_.step())
            waiting_[parentIn(database_, parents_, 0, number)] |= marks;
        return Step{number, marks};
    }

private:
    Database& database_;
    Statement parents_;
    std::map<std::int64_t, unsigned, std::greater<>> waiting_;
};

/// The numbers of the parents, last one first, of each commit that is reached.
using ReachedCommits = std::unordered_map<std::int64_t, std::vector<std::int64_t>>;

/// What `start` builds on, and itself, in one pass over the table: a query for each commit would
/// take longer.
ReachedCommits reachedFrom(Database& database, std::int64_t start) {
    ReachedCommits reached;
    reached[start];
    Statement edges = database.prepare(
        "SELECT number, parent FROM parents WHERE number <= ? ORDER BY number DESC, position DESC");
    edges.bind(start);
    while (edges.step()) {
        const auto child = reached.find(edges.integer(0));
        if (child == reached.end())
            continue;
        const std::int64_t parent = parentIn(database, edges, 1, child->first);
        child->second.push_back(parent);
        reached[parent];
    }
    return reached;
}

std::vector<CommitEntry> entriesOf(Database& database, std::int64_t newest,
                                   const ReachedCommits& reached) {
    Statement rows = database.prepare(
        "SELECT number, hash, author, message, time FROM commits WHERE number <= ? "
        "ORDER BY number DESC");
    rows.bind(newest);
    std::vector<CommitEntry> entries;
    entries.reserve(reached.size());
    while (rows.step()) {
        if (reached.contains(rows.integer(0)))
            entries.push_back(entryWithoutParents(CheckedRow(database, rows)));
    }
    return entries;
}

/// Gives the entries, newest first, the hashes of their parents.
void nameParents(const Database& database, const ReachedCommits& reached,
                 std::vector<CommitEntry>& entries) {
    std::unordered_map<std::int64_t, OdString> hashes;
    for (std::size_t left = entries.size(); left > 0; --left) {
        CommitEntry& entry = entries[left - 1];
        const std::vector<std::int64_t>& parents = reached.at(entry.number);
        for (std::size_t parentsLeft = parents.size(); parentsLeft > 0; --parentsLeft) {
            const std::int64_t parent = parents[parentsLeft - 1];
            const auto known = hashes.find(parent);
            if (known == hashes.end())
                failBuildsOn(database, entry.number, parent);
            entry.parents.push_back(known->second);
        }
        hashes.emplace(entry.number, entry.hash);
    }
}

/// The first of them, one by one.
std::vector<CommitEntry> newestAncestors(History& history, std::int64_t start, std::size_t most) {
    std::vector<CommitEntry> entries;
    Walk walk(history.database());
    walk.startAt(start, 0);
    while (entries.size() < most) {
        const std::optional<Step> step = walk.next();
        if (!step)
            break;
        std::optional<CommitEntry> entry = history.commitByNumber(step->number);
        if (!entry)
            failDamaged(history.database(),
                        OdString::format(tr(L"commit %i is missing"), step->number));
        entries.push_back(std::move(*entry));
    }
    return entries;
}

/// The numbers from the first commit of the line of first parents to `number`.
std::vector<std::int64_t> firstParentLine(Database& database, std::int64_t number) {
    Statement query =
        database.prepare("SELECT parent FROM parents WHERE number = ? ORDER BY position LIMIT 1");
    std::vector<std::int64_t> line = {number};
    for (query.bind(number); query.step(); query.bind(line.back()))
        line.push_back(parentIn(database, query, 0, line.back()));
    std::reverse(line.begin(), line.end());
    return line;
}

}  // namespace

std::vector<CommitEntry> History::ancestors(const OdString& hash, std::size_t most) {
    if (hash.isEmpty())
        return {};
    const std::int64_t start = numberOf(*database_, hash);
    if (most <= fewCommits)
        return newestAncestors(*this, start, most);
    const ReachedCommits reached = reachedFrom(*database_, start);
    std::vector<CommitEntry> entries = entriesOf(*database_, start, reached);
    nameParents(*database_, reached, entries);
    return entries;
}

std::optional<OdString> History::mergeBase(const OdString& one, const OdString& other) {
    if (one.isEmpty() || other.isEmpty())
        return std::nullopt;
    constexpr unsigned both = 3;
    Walk walk(*database_);
    walk.startAt(numberOf(*database_, one), 1);
    walk.startAt(numberOf(*database_, other), 2);
    // What builds on a commit has a higher number, so the first one in common has no other such
    // commit above it.
    while (const std::optional<Step> step = walk.next()) {
        if (step->marks != both)
            continue;
        const std::optional<CommitEntry> base = commitByNumber(step->number);
        if (!base)
            failDamaged(*database_, OdString::format(tr(L"commit %i is missing"), step->number));
        return base->hash;
    }
    return std::nullopt;
}

bool History::buildsOn(const OdString& descendant, const OdString& ancestor) {
    if (ancestor.isEmpty() || descendant.isEmpty())
        return ancestor.isEmpty();
    const std::int64_t wanted = numberOf(*database_, ancestor);
    Walk walk(*database_);
    walk.startAt(numberOf(*database_, descendant), 1);
    while (const std::optional<Step> step = walk.next()) {
        if (step->number <= wanted)
            return step->number == wanted;
    }
    return false;
}

Tree History::tree(const OdString& hash) {
    Tree tree;
    if (hash.isEmpty())
        return tree;
    Statement rows = database_->prepare(
        "SELECT path, url, previous_path, size FROM changes WHERE number = ? ORDER BY path");
    for (const std::int64_t number : firstParentLine(*database_, numberOf(*database_, hash))) {
        std::vector<FileDelta> deltas;
        for (rows.bind(number); rows.step();)
            deltas.push_back(toDelta(CheckedRow(*database_, rows)));
        apply(std::move(deltas), tree);
    }
    return tree;
}

}  // namespace qrv
