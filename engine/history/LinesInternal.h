#pragma once

#include <engine/database/Database.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace qrv {

// A line is a chain of commits of which each is the first parent of the next one. Every commit is
// on one line, named by the number of its first commit; it goes on with the first commit that is
// made on its last one, and another one begins a new line. So the first parents of a commit, all
// the way back, are a few pieces of lines, however long the history is.

/// The commits of a line up to `last`.
struct LinePiece {
    std::int64_t line = 0;
    std::int64_t last = 0;

    friend bool operator==(const LinePiece&, const LinePiece&) = default;
};

/// A commit and its first parents, all the way back.
class FirstParents {
public:
    /// 0 stands for what is before the first commit.
    FirstParents(Database& database, std::int64_t number);

    /// From the newest piece to the oldest; nothing behind the last one. Throws `DatabaseError` for
    /// a line that cannot be.
    std::optional<LinePiece> piece(std::size_t index);
    bool contains(std::int64_t number);

private:
    void add(std::int64_t number);
    /// Whether there is one more.
    bool findNext();

    Database& database_;
    Statement lineOfCommit_;
    Statement firstParent_;
    std::vector<LinePiece> pieces_;
};

/// The number of the last commit that two have in common among their first parents and themselves;
/// 0 for none.
std::int64_t lastInCommon(FirstParents& one, FirstParents& other);

/// Notes the line of a new commit, when its parents are noted.
void addLine(Database& database, std::int64_t number);
/// The same for all commits of a history that has no lines yet.
void addAllLines(Database& database);

/// The number of the first commit whose line is not what its parents make it; 0 for none.
std::int64_t firstWrongLine(Database& database);

}  // namespace qrv
