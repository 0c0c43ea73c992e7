#include <engine/diff/EditSearchInternal.h>

#include <algorithm>
#include <cstdlib>
#include <optional>

// The divide-and-conquer search of E. W. Myers, "An O(ND) Difference Algorithm and Its Variations":
// two ways with as few edits as possible are begun at both ends, and where they meet, the sequences
// are split. When they do not meet for long, they are split where one of them got furthest, which
// bounds the time of a split as well as the memory.
namespace qrv {

namespace {

using Sequence = std::span<const std::uint32_t>;

/// Edits in one direction, before a split is made anywhere.
constexpr int mostRounds = 256;
/// Comparisons and diagonals; a fraction of a second.
constexpr std::int64_t mostSteps = 100'000'000;

/// How far from one end of two sequences the ways with so many edits lead at most. A way that has
/// passed `x` elements of the one sequence and `y` of the other is on the diagonal x - y.
class Front {
public:
    enum class From { begin, end };

    explicit Front(From from) : isFromBegin_(from == From::begin), reaches_(2 * mostRounds + 3) {}

    /// The first elements, seen from this end, must differ.
    void start(Sequence one, Sequence other) {
        one_ = one;
        other_ = other;
        at(0) = 0;
    }

    /// Before the diagonals of a round are gone along.
    void startRound(int round) {
        at(-round - 1) = unreachable;
        at(round + 1) = unreachable;
    }

    /// Makes one more edit, to come to this diagonal, and goes along it as far as it gets. Gives
    /// the number of steps.
    int advance(int diagonal) {
        const int passed = std::max(afterRemoval(diagonal), afterAddition(diagonal));
        at(diagonal) = passed;
        if (passed == unreachable)
            return 1;
        int x = passed;
        while (x < size(one_) && x - diagonal < size(other_) && isEqual(x, x - diagonal))
            ++x;
        at(diagonal) = x;
        return x - passed + 1;
    }

    bool isReached(int diagonal) const { return reach(diagonal) != unreachable; }
    int reach(int diagonal) const { return reaches_[place(diagonal)]; }

private:
    static constexpr int unreachable = -1;

    static int size(Sequence sequence) { return static_cast<int>(sequence.size()); }
    int& at(int diagonal) { return reaches_[place(diagonal)]; }
    static std::size_t place(int diagonal) {
        const int index = diagonal + mostRounds + 1;
        return static_cast<std::size_t>(index);
    }

    int afterRemoval(int diagonal) const {
        const int x = reach(diagonal - 1);
        return x == unreachable || x == size(one_) ? unreachable : x + 1;
    }
    int afterAddition(int diagonal) const {
        const int x = reach(diagonal + 1);
        return x == unreachable || x - diagonal > size(other_) ? unreachable : x;
    }

    bool isEqual(int x, int y) const {
        const auto one = static_cast<std::size_t>(isFromBegin_ ? x : size(one_) - 1 - x);
        const auto other = static_cast<std::size_t>(isFromBegin_ ? y : size(other_) - 1 - y);
        return one_[one] == other_[other];
    }

    bool isFromBegin_;
    Sequence one_;
    Sequence other_;
    // By diagonal; in each round only every other one is renewed.
    std::vector<int> reaches_;
};

/// Parts of the two sequences.
struct Box {
    std::size_t oldBegin = 0;
    std::size_t oldEnd = 0;
    std::size_t newBegin = 0;
    std::size_t newEnd = 0;

    bool isOneSided() const { return oldBegin == oldEnd || newBegin == newEnd; }
};

struct Place {
    int x = 0;
    int y = 0;
};

class EditSearch {
public:
    EditSearch(Sequence before, Sequence after) : before_(before), after_(after) {
        kept_.before.resize(before.size());
        kept_.after.resize(after.size());
    }

    KeptElements run() {
        // A stack in place of recursion, whose depth the contents would decide.
        waiting_.push_back({0, before_.size(), 0, after_.size()});
        while (!waiting_.empty()) {
            Box box = waiting_.back();
            waiting_.pop_back();
            keepCommonEnds(box);
            if (box.isOneSided())
                continue;
            if (const std::optional<Place> place = findSplit(box))
                split(box, *place);
        }
        return std::move(kept_);
    }

private:
    void keepCommonEnds(Box& box) {
        for (; !box.isOneSided() && before_[box.oldBegin] == after_[box.newBegin];
             ++box.oldBegin, ++box.newBegin)
            keep(box.oldBegin, box.newBegin);
        for (; !box.isOneSided() && before_[box.oldEnd - 1] == after_[box.newEnd - 1];
             --box.oldEnd, --box.newEnd)
            keep(box.oldEnd - 1, box.newEnd - 1);
    }

    void keep(std::size_t oldIndex, std::size_t newIndex) {
        kept_.before[oldIndex] = true;
        kept_.after[newIndex] = true;
    }

    void split(const Box& box, Place place) {
        const std::size_t oldMiddle = box.oldBegin + static_cast<std::size_t>(place.x);
        const std::size_t newMiddle = box.newBegin + static_cast<std::size_t>(place.y);
        waiting_.push_back({oldMiddle, box.oldEnd, newMiddle, box.newEnd});
        waiting_.push_back({box.oldBegin, oldMiddle, box.newBegin, newMiddle});
    }

    /// Nothing when the bound of the work is reached.
    std::optional<Place> findSplit(const Box& box) {
        const Sequence one = before_.subspan(box.oldBegin, box.oldEnd - box.oldBegin);
        const Sequence other = after_.subspan(box.newBegin, box.newEnd - box.newBegin);
        oldSize_ = static_cast<int>(one.size());
        newSize_ = static_cast<int>(other.size());
        forward_.start(one, other);
        backward_.start(one, other);
        for (int round = 1; round <= mostRounds; ++round) {
            if (const std::optional<int> diagonal = meet(forward_, backward_, round, round - 1))
                return placeOf(*diagonal);
            if (const std::optional<int> diagonal = meet(backward_, forward_, round, round))
                return placeFromEnd(*diagonal);
            if (steps_ > mostSteps)
                return std::nullopt;
        }
        return furthest();
    }

    /// Goes one round with `front` and gives the diagonal on which it met the other one, if it did.
    std::optional<int> meet(Front& front, const Front& other, int round, int otherRound) {
        // The same diagonal has another number from the other end.
        const int difference = oldSize_ - newSize_;
        front.startRound(round);
        for (int diagonal = -round; diagonal <= round; diagonal += 2) {
            steps_ += front.advance(diagonal);
            const int mirrored = difference - diagonal;
            const bool isFresh =
                std::abs(mirrored) <= otherRound && (mirrored - otherRound) % 2 == 0;
            if (isFresh && front.isReached(diagonal) && other.isReached(mirrored) &&
                front.reach(diagonal) + other.reach(mirrored) >= oldSize_)
                return diagonal;
        }
        return std::nullopt;
    }

    Place placeOf(int diagonal) const {
        const int x = forward_.reach(diagonal);
        return {x, x - diagonal};
    }
    Place placeFromEnd(int diagonal) const {
        const int x = backward_.reach(diagonal);
        return {oldSize_ - x, newSize_ - (x - diagonal)};
    }

    /// Where most elements are passed after the last round.
    Place furthest() const {
        const auto [forward, forwardSum] = furthestOf(forward_);
        const auto [backward, backwardSum] = furthestOf(backward_);
        return forwardSum >= backwardSum ? placeOf(forward) : placeFromEnd(backward);
    }

    static std::pair<int, int> furthestOf(const Front& front) {
        std::pair<int, int> best = {0, -1};
        for (int diagonal = -mostRounds; diagonal <= mostRounds; diagonal += 2) {
            const int sum = 2 * front.reach(diagonal) - diagonal;
            if (front.isReached(diagonal) && sum > best.second)
                best = {diagonal, sum};
        }
        return best;
    }

    Sequence before_;
    Sequence after_;
    KeptElements kept_;
    std::vector<Box> waiting_;
    Front forward_{Front::From::begin};
    Front backward_{Front::From::end};
    // Of the box that is being split.
    int oldSize_ = 0;
    int newSize_ = 0;
    std::int64_t steps_ = 0;
};

}  // namespace

KeptElements findKept(std::span<const std::uint32_t> before, std::span<const std::uint32_t> after) {
    return EditSearch(before, after).run();
}

}  // namespace qrv
