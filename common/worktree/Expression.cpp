#include <common/worktree/ExpressionInternal.h>
#include <common/worktree/ExpressionSizeInternal.h>
#ifdef QRV_BUNDLED_PLATFORM
#include <platform/kernel/Stack.h>
#endif

#include <algorithm>
#include <limits>
#include <locale>
#include <utility>

namespace common {

namespace {

// What the expression library of g++ 12 was measured to take of the stack, without optimisation:
// compiling, 150 bytes for each term and 540 for each parenthesis; matching, at most 170 for each
// state that it goes through. Instrumented code takes several times as much.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t instrumented = 6;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr std::size_t instrumented = 6;
#else
constexpr std::size_t instrumented = 1;
#endif
#else
constexpr std::size_t instrumented = 1;
#endif
constexpr std::size_t bytesForTerm = 160 * instrumented;
constexpr std::size_t bytesForParenthesis = 450 * instrumented;
constexpr std::size_t bytesForState = 180 * instrumented;
/// Left to others: what is called at the end, and the throwing of an exception.
constexpr std::size_t reserveBytes = std::size_t{32} * 1024;
// So much is there in any thread, and need not be asked for.
constexpr std::size_t alwaysThereBytes = std::size_t{64} * 1024;

std::size_t usableStackBytes() {
#ifdef QRV_BUNDLED_PLATFORM
    const std::size_t left = kernel::stackLeftBytes();
#else
    // A host's platform does not tell: half of a small thread's stack.
    const std::size_t left = std::size_t{256} * 1024;
#endif
    return left > reserveBytes ? left - reserveBytes : 0;
}

void requireStackToCompile(std::string_view expression) {
    const auto parentheses =
        static_cast<std::size_t>(std::count(expression.begin(), expression.end(), '('));
    const std::size_t needed = expression.size() * bytesForTerm + parentheses * bytesForParenthesis;
    if (needed > alwaysThereBytes && needed > usableStackBytes())
        throw std::regex_error(std::regex_constants::error_complexity);
}

bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

/// Copies an expression with its numbers made harmless. It follows the library's own scanner, for
/// which digits are a number only between braces and behind a backslash.
class NumberLimiter {
public:
    explicit NumberLimiter(std::string_view expression) : rest_(expression) {}

    std::string limited() {
        while (!rest_.empty())
            takeNext();
        return std::move(result_);
    }

private:
    enum class Place { normal, bracket, brace };

    void takeNext() {
        const char first = rest_.front();
        if (place_ == Place::brace) {
            if (isDigit(first))
                return takeNumber();
            if (first == '}')
                place_ = Place::normal;
        } else if (first == '\\') {
            return takeEscape();
        } else if (place_ == Place::bracket) {
            if (first == ']')
                place_ = Place::normal;
            else if (first == '[')
                return takeClass();
        } else if (first == '[') {
            place_ = Place::bracket;
        } else if (first == '{') {
            place_ = Place::brace;
        }
        take(1);
    }

    void takeEscape() {
        take(1);
        // "\0" is a character, and the digits behind it are what they are.
        if (place_ == Place::normal && !rest_.empty() && isDigit(rest_.front()) &&
            rest_.front() != '0')
            takeNumber();
        else
            take(!rest_.empty() && rest_.front() == 'c' ? 2 : 1);
    }

    /// A class such as "[:alpha:]", whose bracket does not end the one around it.
    void takeClass() {
        take(1);
        const char mark = rest_.empty() ? '\0' : rest_.front();
        if (mark != ':' && mark != '.' && mark != '=')
            return;
        const std::size_t end = rest_.find(mark, 1);
        take(end == std::string_view::npos ? rest_.size() : end + 2);
    }

    void takeNumber() {
        const std::size_t count = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
        if (!overflows(rest_.substr(0, count)))
            return take(count);
        rest_.remove_prefix(count);
        result_ += std::to_string(std::numeric_limits<int>::max());
    }

    static bool overflows(std::string_view digits) {
        constexpr long limit = std::numeric_limits<long>::max();
        long number = 0;
        for (const char byte : digits) {
            const long digit = byte - '0';
            if (number > (limit - digit) / 10)
                return true;
            number = number * 10 + digit;
        }
        return false;
    }

    void take(std::size_t count) {
        count = std::min(count, rest_.size());
        result_ += rest_.substr(0, count);
        rest_.remove_prefix(count);
    }

    std::string_view rest_;
    std::string result_;
    Place place_ = Place::normal;
};

std::regex compiledInClassicLocale(const std::string& expression, std::regex::flag_type flags) {
    std::regex compiled;
    compiled.imbue(std::locale::classic());
    compiled.assign(expression, std::regex::ECMAScript | flags);
    return compiled;
}

}  // namespace

std::regex compiledExpression(const std::string& expression, std::regex::flag_type letterCase) {
    requireStackToCompile(expression);
    return compiledInClassicLocale(NumberLimiter(expression).limited(), letterCase);
}

Expression::Expression(std::string text, std::regex::flag_type letterCase, std::regex compiled)
    : text_(std::move(text)),
      letterCase_(letterCase),
      size_(expressionSize(text_)),
      compiled_(std::move(compiled)) {
}

bool Expression::matches(std::string_view text) const {
    if (hasRoomFor(text.size()))
        return std::regex_match(text.begin(), text.end(), compiled_);
#ifdef _GLIBCXX_RELEASE
    // The same machine, followed in all directions at once: slower, but no deeper than it has
    // states.
    if (!shallow_)
        shallow_ = compiledExpression(text_, letterCase_ | std::regex_constants::__polynomial);
    if (hasRoomFor(0))
        return std::regex_match(text.begin(), text.end(), *shallow_);
#endif
    throw std::regex_error(std::regex_constants::error_stack);
}

/// Whether the stack suffices when each character leads through all states.
bool Expression::hasRoomFor(std::size_t characters) const {
    const std::size_t states = (characters + 1) * size_;
    if (states <= alwaysThereBytes / bytesForState)
        return true;
    if (!stackBytes_)
        stackBytes_ = usableStackBytes();
    return states <= *stackBytes_ / bytesForState;
}

}  // namespace common
