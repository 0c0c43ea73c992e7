#include <common/worktree/ExpressionSizeInternal.h>

#include <algorithm>
#include <vector>

namespace common {

namespace {

constexpr std::size_t largest = 1'000'000'000;

/// Reads an expression from left to right, and adds up the states of what stands there.
class Counter {
public:
    explicit Counter(std::string_view expression) : rest_(expression) {}

    std::size_t count() {
        while (!rest_.empty())
            addNext();
        std::size_t total = 0;
        for (const Group& group : open_)
            total += group.total;
        return std::min(total, largest);
    }

private:
    /// A group that is still open, or the whole. Its beginning and end are states as well.
    struct Group {
        std::size_t total = 6;
        std::size_t lastAtom = 0;
    };

    void addNext() {
        const char first = take();
        switch (first) {
            case '(':
                open_.emplace_back();
                break;
            case ')':
                closeGroup();
                break;
            case '|':
                grow(3);
                open_.back().lastAtom = 0;
                break;
            case '*':
            case '+':
            case '?':
                grow(2);
                break;
            case '{':
                repeat();
                break;
            case '[':
                skipBracket();
                addAtom(1);
                break;
            case '\\':
                take();
                addAtom(1);
                break;
            default:
                addAtom(1);
        }
    }

    char take() {
        if (rest_.empty())
            return '\0';
        const char first = rest_.front();
        rest_.remove_prefix(1);
        return first;
    }

    void addAtom(std::size_t states) {
        Group& group = open_.back();
        group.total = std::min(group.total + states, largest);
        group.lastAtom = states;
    }

    /// What is repeated again is repeated with all that made it repeat before.
    void grow(std::size_t states) {
        Group& group = open_.back();
        group.total = std::min(group.total + states, largest);
        group.lastAtom = std::min(group.lastAtom + states, largest);
    }

    void closeGroup() {
        if (open_.size() == 1)
            return;
        const std::size_t states = open_.back().total;
        open_.pop_back();
        addAtom(states);
    }

    /// A copy for each time, and one that the copies are made from.
    void repeat() {
        const std::size_t least = takeNumber();
        std::size_t most = least;
        if (!rest_.empty() && rest_.front() == ',') {
            take();
            most = std::max(least, takeNumber());
        }
        if (!rest_.empty() && rest_.front() == '}')
            take();
        const std::size_t each = open_.back().lastAtom + 1;
        grow((most + 1) > largest / each ? largest : (most + 1) * each + 2);
    }

    std::size_t takeNumber() {
        std::size_t number = 0;
        while (!rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9')
            number = std::min(number * 10 + static_cast<std::size_t>(take() - '0'), largest);
        return number;
    }

    void skipBracket() {
        while (!rest_.empty()) {
            const char next = take();
            if (next == ']')
                return;
            if (next == '\\')
                take();
            else if (next == '[' && !rest_.empty())
                skipClass();
        }
    }

    /// A class such as "[:alpha:]", whose bracket does not end the one around it.
    void skipClass() {
        const char mark = rest_.front();
        if (mark != ':' && mark != '.' && mark != '=')
            return;
        take();
        const std::size_t end = rest_.find(mark);
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        take();
    }

    std::string_view rest_;
    std::vector<Group> open_ = std::vector<Group>(1);
};

}  // namespace

std::size_t expressionSize(std::string_view expression) {
    return Counter(expression).count();
}

}  // namespace common
