#include <common/base/MessageInternal.h>
#include <common/worktree/IgnoreLine.h>
#include <common/worktree/RepoIgnore.h>
#include <platform/ut/Dir.h>
#include <platform/ut/FileName.h>
#include <platform/ut/TextFile.h>

#include <array>
#include <utility>

namespace common {

namespace {

OdString ignorePath(const RootPath& root) {
    return root.propertiesPath() + ut::FileName::getPathSeparator() + L"ignore";
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
    IgnoreLine rule(line);
    if (!rule.isRule())
        return {};
    try {
        expressions_.push_back(rule.compiled());
    } catch (const std::regex_error& error) {
        return ErrorMessage{OdString(error.what())};
    }
    lines_.push_back(std::move(rule));
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
