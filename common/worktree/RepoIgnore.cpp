#include <common/base/MessageInternal.h>
#include <common/worktree/RepoIgnore.h>
#include <platform/ut/Dir.h>
#include <platform/ut/FileName.h>
#include <platform/ut/TextFile.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <locale>
#include <string>
#include <string_view>
#include <utility>

namespace common {

namespace {

/// Longer lines are not compiled: the expression compiler recurses, and a line that is long enough
/// would end the process.
constexpr int longestRule = 2000;
constexpr std::size_t mostDigits = 9;

OdString ignorePath(const RootPath& root) {
    return root.propertiesPath() + ut::FileName::getPathSeparator() + L"ignore";
}

/// The expression that stands for one character of a glob. Brackets and everything else that means
/// something in expressions keep that meaning.
std::wstring expressionOf(wchar_t globUnit) {
    switch (globUnit) {
        case L'*':
            return L".*";
        case L'?':
            return L".";
        case L'.':
            return L"\\.";
        case L'/':
            // Deliberately not escaped, also where the separator is a backslash.
            return {ut::FileName::getPathSeparator()};
        default:
            return {globUnit};
    }
}

OdString expressionOf(const OdString& glob) {
    std::wstring expression = L"^";
    for (int i = 0; i < glob.getLength(); ++i)
        expression += expressionOf(glob[i]);
    return OdString(expression + L"$");
}

std::size_t digitsFrom(std::wstring_view text, std::size_t begin) {
    const std::size_t end = text.find_first_not_of(L"0123456789", begin);
    return std::min(end, text.size()) - std::min(begin, text.size());
}

/// Whether a repetition or a back reference has more digits than the expression compiler can take
/// without overflowing. No expression needs them, so one in brackets, where they mean nothing, may
/// count as well.
bool hasTooLargeNumber(std::wstring_view expression) {
    for (std::size_t i = 0; i < expression.size(); ++i) {
        if (expression[i] != L'{' && expression[i] != L'\\')
            continue;
        const std::size_t first = digitsFrom(expression, i + 1);
        const std::size_t behind = i + 1 + first;
        const bool isRange = behind < expression.size() && expression[behind] == L',';
        const std::size_t second = isRange ? digitsFrom(expression, behind + 1) : 0;
        if (std::max(first, second) > mostDigits)
            return true;
        if (expression[i] == L'\\' && first == 0)
            ++i;
    }
    return false;
}

/// Throws std::regex_error when the text is no expression. Which letters are one letter in two
/// cases must not depend on the host's locale.
std::regex compiled(const OdString& expression, std::regex::flag_type letterCase) {
    if (hasTooLargeNumber(expression.toWide()))
        throw std::regex_error(std::regex_constants::error_complexity);
    std::regex compiled;
    compiled.imbue(std::locale::classic());
    compiled.assign(expression.toNarrow(), std::regex::ECMAScript | letterCase);
    return compiled;
}

std::regex compiledRule(const OdString& line) {
    if (line.getLength() > longestRule)
        throw std::regex_error(std::regex_constants::error_complexity);
    if (line[0] == L'^')
        return compiled(line, {});
    return compiled(expressionOf(line), std::regex::icase);
}

}  // namespace

RepoIgnore::RepoIgnore(std::function<void(const OdString&)> onError, const RootPath& root)
    : file_(ignorePath(root)) {
    load(root, std::move(onError));
}

void RepoIgnore::load(const RootPath& root, std::function<void(const OdString&)> onError) {
    if (!ut::TextFile(file_).exists()) {
        // A repository whose ignore file cannot be made is still one: it has no rules.
        static_cast<void>(write(explanation(false) + defaultIgnore(), root));
        if (!ut::TextFile(file_).exists())
            return;
    }
    const std::vector<OdString> messages = parse();
    if (messages.empty())
        return;
    onError(translate(L"An error occurred while parsing the ignored file:"));
    for (const OdString& message : messages)
        onError(message);
}

std::vector<OdString> RepoIgnore::parse() {
    std::vector<OdString> messages;
    ut::TextFile file(file_);
    isRead_ = file.open();
    if (!isRead_)
        return messages;
    OdString line = file.getFirstLine();
    int lineNumber = 1;
    do {
        if (const Expected<void> added = addRule(line); !added) {
            messages.push_back(
                OdString::format(translate(L"Line %i: %ls"), lineNumber, added.error().message));
        }
        line = file.getNextLine();
        ++lineNumber;
    } while (!file.eof());
    return messages;
}

Expected<void> RepoIgnore::addRule(const OdString& line) {
    if (line.isEmpty() || line[0] == L'#')
        return {};
    try {
        expressions_.push_back(compiledRule(line));
    } catch (const std::regex_error& error) {
        return ErrorMessage{OdString(error.what())};
    }
    lines_.push_back(line);
    return {};
}

OdString RepoIgnore::explanation(bool plain) {
    const std::array<OdString, 11> lines = {
        translate(L"The following expressions define which files should be ignored."),
        translate(L"It is possible to add your own. To do so start a new line."),
        translate(L"Syntax: "),
        translate(L"    lines starting with a # are a comment and will not be parsed"),
        translate(L"    a * will be parsed as multiples of any character"),
        translate(L"    a ? will be parsed as any one character"),
        translate(L"    characters between [] will be treated as any of"),
        translate(L"        e.g. *[-+]*.txt will be treated as, a couple of characters,"),
        translate(L"        then one + or -, a couple of characters and eventually ending in .txt"),
        translate(L" If you want a more expressive syntax you can also use regular expressions."),
        translate(L"    lines starting with a ^ will be parsed as a regular expression"),
    };
    OdString text;
    for (const OdString& line : lines)
        text += OdString(plain ? L"" : L"#") + line + L"\n";
    return text;
}

OdString RepoIgnore::defaultIgnore() {
    return L"*.bak\n*.dwl\n*.dwl2\n";
}

Expected<void> RepoIgnore::write(const OdString& content, const RootPath& root) {
    ut::TextFile file(ignorePath(root));
    if (file.exists())
        return {};
    // Nothing else makes this folder. When it is there already, or cannot be made, the writing
    // tells.
    ut::Dir::create(root.propertiesPath());
    file.addLine(content);
    if (!file.write())
        return ErrorMessage{L"Failed to write Ignore file."};
    return {};
}

}  // namespace common
