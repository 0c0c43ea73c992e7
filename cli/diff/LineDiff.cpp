#include <cli/diff/EditSearchInternal.h>
#include <cli/diff/LineDiff.h>

#include <algorithm>
#include <numeric>
#include <string_view>

namespace qrv_cli {

namespace {

/// More are not compared.
constexpr std::size_t mostLines = 2'000'000;

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

    /// By sorting, because there are no lines that make that slow, as there are for a hash table.
    void number() {
        std::vector<std::uint32_t> places(numbers_.size());
        std::iota(places.begin(), places.end(), 0U);
        std::sort(places.begin(), places.end(), [this](std::uint32_t one, std::uint32_t other) {
            return line(one) < line(other);
        });
        std::uint32_t next = 0;
        for (auto begin = places.begin(); begin != places.end(); ++next) {
            const std::string_view text = line(*begin);
            const auto end = std::find_if(begin, places.end(),
                                          [&](std::uint32_t place) { return line(place) != text; });
            numberEqualLines(begin, end, next);
            begin = end;
        }
    }

    template <class Iterator>
    void numberEqualLines(Iterator begin, Iterator end, std::uint32_t number) {
        const auto isOld = [this](std::uint32_t place) { return place < oldCount_; };
        const bool isCommon = std::any_of(begin, end, isOld) && !std::all_of(begin, end, isOld);
        for (auto place = begin; place != end; ++place) {
            numbers_[*place] = number;
            isCommon_[*place] = isCommon;
        }
    }

    const Lines& before_;
    const Lines& after_;
    Middle middle_;
    std::size_t oldCount_;
    std::vector<std::uint32_t> numbers_;
    std::vector<bool> isCommon_;
};

/// The lines that both texts have, with their places.
struct CommonLines {
    std::vector<std::uint32_t> numbers;
    std::vector<std::size_t> places;
};

CommonLines commonLines(const Numbering& lines, std::size_t begin, std::size_t end) {
    CommonLines common;
    for (std::size_t place = begin; place < end; ++place) {
        if (lines.isCommon(place)) {
            common.numbers.push_back(lines[place]);
            common.places.push_back(place);
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

}  // namespace qrv_cli
