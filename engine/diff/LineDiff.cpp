#include <engine/diff/EditSearchInternal.h>
#include <engine/diff/LineDiff.h>

#include <algorithm>
#include <functional>
#include <span>
#include <string_view>

namespace qrv {

namespace {

/// More are not compared. They are more than two of the longest texts of which the program shows
/// patches can have, and take less than half a gigabyte.
constexpr std::size_t mostLines = 25'000'000;

/// What lies between the lines that both texts begin and end with.
struct Middle {
    std::size_t begin = 0;
    std::size_t oldEnd = 0;
    std::size_t newEnd = 0;
};

Middle middleOf(const Lines& before, const Lines& after) {
    Middle middle = {0, before.size(), after.size()};
    while (middle.begin < middle.oldEnd && middle.begin < middle.newEnd &&
           before[middle.begin] == after[middle.begin])
        ++middle.begin;
    while (middle.oldEnd > middle.begin && middle.newEnd > middle.begin &&
           before[middle.oldEnd - 1] == after[middle.newEnd - 1]) {
        --middle.oldEnd;
        --middle.newEnd;
    }
    return middle;
}

/// A line by its place: those of the new text follow those of the old one.
class Numbering {
public:
    Numbering(const Lines& before, const Lines& after, const Middle& middle)
        : before_(before),
          after_(after),
          middle_(middle),
          oldCount_(middle.oldEnd - middle.begin),
          numbers_(oldCount_ + middle.newEnd - middle.begin),
          isCommon_(numbers_.size()) {
        number();
    }

    std::size_t oldCount() const { return oldCount_; }
    std::size_t count() const { return numbers_.size(); }
    /// Equal for equal lines only.
    std::uint32_t operator[](std::size_t place) const { return numbers_[place]; }
    /// Whether both texts have such a line.
    bool isCommon(std::size_t place) const { return isCommon_[place]; }

private:
    std::string_view line(std::size_t place) const {
        return place < oldCount_ ? before_[middle_.begin + place]
                                 : after_[middle_.begin + place - oldCount_];
    }

    /// A line's hash, and its place in the lower half.
    using Key = std::uint64_t;
    using Keys = std::span<Key>;

    static std::uint32_t placeOf(Key key) { return static_cast<std::uint32_t>(key); }
    static Key hashOf(Key key) { return key >> placeBits; }

    /// By sorting, because there are no lines that make that slow, as there are for a hash table.
    /// Numbers are sorted much faster than texts.
    void number() {
        std::vector<Key> keys(numbers_.size());
        for (std::size_t place = 0; place < keys.size(); ++place) {
            const Key hash = std::hash<std::string_view>()(line(place));
            keys[place] = (hash & ~Key{0} << placeBits) | place;
        }
        std::sort(keys.begin(), keys.end());
        for (Keys rest = keys; !rest.empty();) {
            const Keys group =
                leading(rest, [](Key first, Key key) { return hashOf(first) == hashOf(key); });
            numberLinesOfOneHash(group);
            rest = rest.subspan(group.size());
        }
    }

    void numberLinesOfOneHash(Keys keys) {
        const auto areEqual = [this](Key first, Key key) {
            return line(placeOf(first)) == line(placeOf(key));
        };
        if (leading(keys, areEqual).size() < keys.size())
            std::sort(keys.begin(), keys.end(), [this](Key one, Key other) {
                return line(placeOf(one)) < line(placeOf(other));
            });
        for (Keys rest = keys; !rest.empty();) {
            const Keys equal = leading(rest, areEqual);
            numberEqualLines(equal);
            rest = rest.subspan(equal.size());
        }
    }

    /// As many of the first ones as belong together with the very first.
    template <class Predicate>
    static Keys leading(Keys keys, Predicate belongs) {
        const auto end = std::find_if_not(keys.begin(), keys.end(),
                                          [&](Key key) { return belongs(keys.front(), key); });
        return keys.first(static_cast<std::size_t>(end - keys.begin()));
    }

    void numberEqualLines(Keys keys) {
        const auto isOld = [this](Key key) { return placeOf(key) < oldCount_; };
        const bool isCommon = std::any_of(keys.begin(), keys.end(), isOld) &&
                              !std::all_of(keys.begin(), keys.end(), isOld);
        for (const Key key : keys) {
            numbers_[placeOf(key)] = next_;
            isCommon_[placeOf(key)] = isCommon;
        }
        ++next_;
    }

    static constexpr int placeBits = 32;

    const Lines& before_;
    const Lines& after_;
    Middle middle_;
    std::size_t oldCount_;
    std::vector<std::uint32_t> numbers_;
    std::vector<bool> isCommon_;
    std::uint32_t next_ = 0;
};

/// The lines that both texts have, with their places.
struct CommonLines {
    std::vector<std::uint32_t> numbers;
    std::vector<std::uint32_t> places;
};

CommonLines commonLines(const Numbering& lines, std::size_t begin, std::size_t end) {
    CommonLines common;
    for (std::size_t place = begin; place < end; ++place) {
        if (lines.isCommon(place)) {
            common.numbers.push_back(lines[place]);
            common.places.push_back(static_cast<std::uint32_t>(place));
        }
    }
    return common;
}

/// Which lines, by their places, stay.
std::vector<bool> keptLines(const Numbering& lines) {
    const CommonLines oldLines = commonLines(lines, 0, lines.oldCount());
    const CommonLines newLines = commonLines(lines, lines.oldCount(), lines.count());
    const KeptElements found = findKept(oldLines.numbers, newLines.numbers);
    std::vector<bool> isKept(lines.count());
    for (std::size_t index = 0; index < found.before.size(); ++index)
        isKept[oldLines.places[index]] = found.before[index];
    for (std::size_t index = 0; index < found.after.size(); ++index)
        isKept[newLines.places[index]] = found.after[index];
    return isKept;
}

/// Both texts keep the same lines in the same order.
std::vector<LineChange> changesBetweenKept(const std::vector<bool>& isKept, std::size_t oldCount,
                                           std::size_t offset) {
    std::vector<LineChange> changes;
    std::size_t oldPlace = 0;
    std::size_t newPlace = oldCount;
    const auto goesOld = [&] { return oldPlace < oldCount && !isKept[oldPlace]; };
    const auto goesNew = [&] { return newPlace < isKept.size() && !isKept[newPlace]; };
    while (oldPlace < oldCount || newPlace < isKept.size()) {
        LineChange change = {offset + oldPlace, 0, offset + newPlace - oldCount, 0};
        for (; goesOld(); ++oldPlace)
            ++change.oldCount;
        for (; goesNew(); ++newPlace)
            ++change.newCount;
        if (change.oldCount + change.newCount > 0)
            changes.push_back(change);
        else {
            ++oldPlace;
            ++newPlace;
        }
    }
    return changes;
}

}  // namespace

std::vector<LineChange> changesOfLines(const Lines& before, const Lines& after) {
    const Middle middle = middleOf(before, after);
    const std::size_t oldCount = middle.oldEnd - middle.begin;
    const std::size_t newCount = middle.newEnd - middle.begin;
    if (oldCount == 0 && newCount == 0)
        return {};
    if (oldCount == 0 || newCount == 0 || oldCount + newCount > mostLines)
        return {{middle.begin, oldCount, middle.begin, newCount}};
    const Numbering lines(before, after, middle);
    return changesBetweenKept(keptLines(lines), oldCount, middle.begin);
}

}  // namespace qrv
