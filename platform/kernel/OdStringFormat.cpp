#include <platform/kernel/OdString.h>

#include <array>
#include <charconv>
#include <utility>

namespace kernel {

std::wstring FormatArgument::digits() const {
    std::array<char, 20> digits{};
    char* const end = digits.data() + digits.size();
    const auto result = isUnsigned_
                            ? std::to_chars(digits.data(), end, static_cast<std::uint64_t>(number_))
                            : std::to_chars(digits.data(), end, number_);
    return {digits.data(), result.ptr};
}

}  // namespace kernel

namespace {

struct Placeholder {
    std::wstring_view token;
    bool takesText;
};

constexpr std::array<Placeholder, 2> placeholders = {{{L"%ls", true}, {L"%i", false}}};
constexpr std::wstring_view percentSign = L"%%";

/// Walks once through a pattern and writes the result. What was written is never looked at again.
class Formatter {
public:
    Formatter(std::wstring_view pattern, std::initializer_list<kernel::FormatArgument> arguments)
        : rest_(pattern), nextArgument_(arguments.begin()), endOfArguments_(arguments.end()) {}

    std::wstring run() {
        while (!rest_.empty()) {
            writeUpToPercent();
            if (!rest_.empty())
                writePercent();
        }
        return std::move(result_);
    }

private:
    void writeUpToPercent() { write(rest_.substr(0, rest_.find(L'%'))); }

    void writePercent() {
        if (rest_.starts_with(percentSign)) {
            rest_.remove_prefix(percentSign.size());
            result_ += L'%';
            return;
        }
        for (const Placeholder& placeholder : placeholders)
            if (rest_.starts_with(placeholder.token))
                return writePlaceholder(placeholder);
        write(rest_.substr(0, 1));
    }

    /// A placeholder uses up its argument also when the two do not fit, so that one wrong place in
    /// a translation leaves the others right.
    void writePlaceholder(const Placeholder& placeholder) {
        if (nextArgument_ == endOfArguments_)
            return write(placeholder.token);
        const kernel::FormatArgument& argument = *nextArgument_++;
        if (argument.isText() != placeholder.takesText)
            return write(placeholder.token);
        rest_.remove_prefix(placeholder.token.size());
        if (argument.isText())
            result_ += argument.text();
        else
            result_ += argument.digits();
    }

    /// Takes a part of the pattern over as it stands.
    void write(std::wstring_view part) {
        result_ += part;
        rest_.remove_prefix(part.size());
    }

    std::wstring_view rest_;
    const kernel::FormatArgument* nextArgument_;
    const kernel::FormatArgument* endOfArguments_;
    std::wstring result_;
};

}  // namespace

OdString OdString::formatArguments(const OdString& pattern,
                                   std::initializer_list<kernel::FormatArgument> arguments) {
    return OdString(Formatter(pattern.units_, arguments).run());
}
