#include <engine/worktree/BoundedExpression.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

namespace qrv {

namespace {

#ifdef _GLIBCXX_RELEASE
constexpr auto inAllDirections = std::regex_constants::__polynomial;
constexpr bool canGoInAllDirections = true;
#else
constexpr std::regex::flag_type inAllDirections = {};
constexpr bool canGoInAllDirections = false;
#endif

/// So many steps at most for one name, when it is followed in all directions.
constexpr std::int64_t mostBroadSteps = 2'000'000;
/// So many steps, and states between two of them, are what the smallest stack has room for.
constexpr std::int64_t mostDepth = 4'000;

struct TooManySteps {};

/// Goes over the bytes of a name and counts whatever it is asked. That is the one way to count what
/// the expression library does: each thing that it tries ends in asking for a byte or for the end,
/// and all but an alternative copies its place in the name before it goes deeper.
class CountedByte {
public:
    // The standard library looks for these names.
    // NOLINTBEGIN(readability-identifier-naming)
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;
    // NOLINTEND(readability-identifier-naming)

    CountedByte() = default;
    CountedByte(const char* byte, std::int64_t& steps) : byte_(byte), steps_(&steps) {}
    CountedByte(const CountedByte& other) : byte_(other.byte_), steps_(other.steps_) { count(); }
    CountedByte& operator=(const CountedByte& other) {
        if (this != &other) {
            byte_ = other.byte_;
            steps_ = other.steps_;
        }
        count();
        return *this;
    }
    ~CountedByte() = default;

    reference operator*() const { return *byte_; }
    CountedByte& operator++() {
        ++byte_;
        return *this;
    }
    // A constant result could not be moved from.
    // NOLINTBEGIN(cert-dcl21-cpp)
    CountedByte operator++(int) {
        CountedByte before = *this;
        ++byte_;
        return before;
    }
    CountedByte& operator--() {
        --byte_;
        return *this;
    }
    CountedByte operator--(int) {
        CountedByte before = *this;
        --byte_;
        return before;
    }
    // NOLINTEND(cert-dcl21-cpp)
    friend bool operator==(const CountedByte& left, const CountedByte& right) {
        left.count();
        return left.byte_ == right.byte_;
    }

private:
    void count() const {
        if (steps_ != nullptr && --*steps_ < 0)
            throw TooManySteps();
    }

    const char* byte_ = nullptr;
    std::int64_t* steps_ = nullptr;
};

/// The answer, or nothing when the steps do not suffice; takes those that it needs.
std::optional<bool> matchIn(std::int64_t& steps, std::string_view name, const std::regex& regex) {
    try {
        const char* const end = name.data() + name.size();
        std::match_results<CountedByte> groups;
        return std::regex_match(CountedByte(name.data(), steps), CountedByte(end, steps), groups,
                                regex);
    } catch (const TooManySteps&) {
        return std::nullopt;
    }
}

/// The same with at most `limit` of the steps.
std::optional<bool> matchIn(std::int64_t& steps, std::int64_t limit, std::string_view name,
                            const std::regex& regex) {
    const std::int64_t allowed = std::min(steps, limit);
    std::int64_t left = allowed;
    const std::optional<bool> answer = matchIn(left, name, regex);
    steps -= allowed - std::max<std::int64_t>(left, 0);
    return answer;
}

bool hasAlternatives(const common::IgnoreLine& line) {
    return line.expression().find('|') != std::string::npos;
}

/// Alternatives are not counted, so there are fewer steps where there may be many of them.
std::int64_t deepSteps(const common::IgnoreLine& line) {
    if (!hasAlternatives(line))
        return mostDepth;
    return std::max<std::int64_t>(2 * mostDepth / static_cast<std::int64_t>(line.size()), 20);
}

/// The library refuses to go in all directions when there is a back reference, and only then.
bool findBackReference(const common::IgnoreLine& line) {
    if (line.expression().find('\\') == std::string::npos)
        return false;
    try {
        static_cast<void>(line.compiled(inAllDirections));
        return !canGoInAllDirections;
    } catch (const std::regex_error&) {
        return true;
    }
}

}  // namespace

BoundedExpression::BoundedExpression(const common::IgnoreLine& line)
    : line_(line),
      mostDeepSteps_(deepSteps(line)),
      hasBackReference_(findBackReference(line)),
      deep_(line.compiled()) {
}

std::optional<bool> BoundedExpression::matches(std::string_view nameNarrow, std::int64_t& steps) {
    // A reference to a group that is not set ends an attempt uncounted, so that alternatives could
    // multiply without an end.
    if (hasBackReference_ && hasAlternatives(line_))
        return std::nullopt;
    std::optional<bool> answer = matchIn(steps, mostDeepSteps_, nameNarrow, deep_);
    if (answer || steps <= 0 || hasBackReference_ || !canGoInAllDirections)
        return answer;
    if (!broad_)
        broad_ = line_.compiled(inAllDirections);
    return matchIn(steps, mostBroadSteps, nameNarrow, *broad_);
}

}  // namespace qrv
