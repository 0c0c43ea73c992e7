#include <cli/Message.h>
#include <cli/Translation.h>
#include <cli/maintenance/IgnoreRules.h>
#include <common/worktree/RepoIgnore.h>
#include <platform/ut/TextFile.h>

#include <QTemporaryDir>
#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace qrv_cli {

namespace {

constexpr const wchar_t* metadataFolder = L".qrv";
constexpr const wchar_t* propertiesPrefix = L".qrv/properties/";

OdString ignorePath(const common::RootPath& root) {
    return root.propertiesPath() + L"/ignore";
}

/// The lines of the ignore file; nothing when it cannot be read.
std::optional<std::vector<OdString>> linesOf(const common::RootPath& root) {
    ut::TextFile file(ignorePath(root));
    if (!file.open())
        return std::nullopt;
    std::vector<OdString> lines;
    for (OdString line = file.getFirstLine(); !file.eof(); line = file.getNextLine())
        lines.push_back(std::move(line));
    return lines;
}

bool isRule(const OdString& line) {
    return !line.isEmpty() && line[0] != L'#';
}

/// The cause in a message of the library about a bad line, if it is about that line.
std::optional<OdString> causeIn(const OdString& message, int line) {
    // Something that no message holds marks where the cause stands in the user's language.
    const OdString mark(L"\x01");
    const OdString pattern = OdString::format(tr(L"Line %i: %ls"), line, mark);
    const int at = pattern.find(mark[0]);
    const OdString head = pattern.left(at);
    const OdString tail = pattern.mid(at + 1, pattern.getLength() - at - 1);
    const int length = message.getLength() - head.getLength() - tail.getLength();
    if (length < 0 || message.left(head.getLength()) != head ||
        message.right(tail.getLength()) != tail)
        return std::nullopt;
    return message.mid(head.getLength(), length);
}

OdString parentOf(const OdString& path) {
    const int slash = path.reverseFind(L'/');
    return slash < 0 ? OdString() : path.left(slash);
}

OdString nameOf(const OdString& path) {
    return path.mid(path.reverseFind(L'/') + 1);
}

/// Why the library would not take the line, asked from the library itself: it has no other way in
/// than a repository with an ignore file.
std::optional<OdString> refusalOf(const OdString& rule) {
    const QTemporaryDir folder;
    const OdString path = OdString::fromNarrow(folder.path().toStdString());
    const Expected<common::RootPath> root = common::RootPath::get(path, true);
    if (!root)
        return root.error().message;
    if (const Expected<void> written = common::RepoIgnore::write(rule, *root); !written)
        return written.error().message;
    std::vector<OdString> messages;
    const common::RepoIgnore ignore(
        [&messages](const OdString& message) { messages.push_back(message); }, *root);
    if (messages.empty())
        return std::nullopt;
    return causeIn(messages.back(), 1).value_or(messages.back());
}

/// A missing file is made first: it begins with the explanation and the default rules.
Expected<std::vector<OdString>> presentLines(const common::RootPath& root) {
    const common::RepoIgnore present([](const OdString&) {}, root);
    std::optional<std::vector<OdString>> lines = linesOf(root);
    if (lines)
        return std::move(*lines);
    return ErrorMessage{
        OdString::format(tr(L"The ignore file '%ls' cannot be read"), printable(ignorePath(root)))};
}

Expected<void> writeLines(const std::vector<OdString>& lines, const std::vector<OdString>& added,
                          const common::RootPath& root) {
    ut::TextFile file(ignorePath(root));
    for (const auto* const part : {&lines, &added}) {
        for (const OdString& line : *part)
            file.addLine(line);
    }
    // A line feed behind the last, so that an editor's next line is one of its own.
    file.addLine({});
    if (file.write())
        return {};
    return ErrorMessage{OdString::format(tr(L"The ignore file '%ls' cannot be written"),
                                         printable(ignorePath(root)))};
}

ErrorMessage refused(const OdString& rule, const OdString& cause) {
    return {OdString::format(tr(L"'%ls' is no rule: %ls"), printable(rule), cause)};
}

Expected<void> checkRule(const OdString& rule) {
    if (rule.isEmpty())
        return refused(rule, tr(L"it is empty"));
    if (rule.find(L'\n') >= 0 || rule.find(L'\r') >= 0)
        return refused(rule, tr(L"it has more than one line"));
    if (rule[0] == L'#')
        return refused(rule, tr(L"it is a comment"));
    if (const std::optional<OdString> refusal = refusalOf(rule))
        return refused(rule, *refusal);
    return {};
}

}  // namespace

std::vector<IgnoreRule> ignoreRules(const common::RootPath& root,
                                    const std::function<void(const OdString&)>& onError) {
    std::vector<OdString> messages;
    const auto note = [&messages, &onError](const OdString& message) {
        messages.push_back(message);
        onError(message);
    };
    const std::vector<std::regex> expressions = common::RepoIgnore(note, root).expressions();
    const std::vector<OdString> lines = linesOf(root).value_or(std::vector<OdString>());
    std::vector<IgnoreRule> rules;
    // The first message is a heading, and the others are in the order of the lines.
    std::size_t nextMessage = 1;
    for (std::size_t i = 0; i < lines.size() && rules.size() < expressions.size(); ++i) {
        const int line = static_cast<int>(i) + 1;
        if (!isRule(lines[i]))
            continue;
        if (nextMessage < messages.size() && causeIn(messages[nextMessage], line))
            ++nextMessage;
        else
            rules.push_back(
                {.line = line, .text = lines[i], .expression = expressions[rules.size()]});
    }
    return rules;
}

std::optional<IgnoreReason> reasonToIgnore(const OdString& path,
                                           const std::vector<IgnoreRule>& rules) {
    const OdString prefix(propertiesPrefix);
    const bool isProperties = path.left(prefix.getLength()) == prefix;
    std::vector<OdString> parts;
    for (OdString part = path; part.getLength() >= prefix.getLength() || !isProperties;
         part = parentOf(part)) {
        if (part.isEmpty())
            break;
        parts.push_back(part);
    }
    std::reverse(parts.begin(), parts.end());
    for (const OdString& part : parts) {
        const std::string name = nameOf(part).toNarrow();
        const auto rule = std::find_if(rules.begin(), rules.end(), [&name](const auto& candidate) {
            return std::regex_match(name, candidate.expression);
        });
        if (rule != rules.end())
            return IgnoreReason{.path = part, .line = rule->line, .rule = rule->text};
        if (OdString::fromNarrow(name) == metadataFolder)
            return IgnoreReason{.path = part, .line = 0, .rule = {}};
    }
    return std::nullopt;
}

Expected<int> addIgnoreRule(const OdString& rule, const common::RootPath& root) {
    if (Expected<void> valid = checkRule(rule); !valid)
        return std::move(valid).error();
    const Expected<std::vector<OdString>> lines = presentLines(root);
    if (!lines)
        return lines.error();
    const auto present = std::find(lines->begin(), lines->end(), rule);
    if (present != lines->end())
        return ErrorMessage{OdString::format(tr(L"The rule '%ls' is there already, in line %i"),
                                             printable(rule), present - lines->begin() + 1)};
    if (Expected<void> written = writeLines(*lines, {rule}, root); !written)
        return std::move(written).error();
    return static_cast<int>(lines->size()) + 1;
}

// In a glob "$" would stand for the end of the name; in brackets it is a character.
std::vector<OdString> draftingIgnoreRules() {
    return {L"*.bak",      L"*.bk[0-9]",   L"*.sv[$]",   L"*.ac[$]",  L"*.autosave",
            L"*.dwl",      L"*.dwl2",      L"*.lck",     L"~[$]*",    L".~lock.*",
            L"plot.log",   L"*.plot.log",  L"*.err",     L"*.dmp",    L"*.tmp",
            L".*.qrv-tmp", L"desktop.ini", L"Thumbs.db", L".DS_Store"};
}

Expected<int> addDraftingIgnoreRules(const common::RootPath& root) {
    const Expected<std::vector<OdString>> lines = presentLines(root);
    if (!lines)
        return lines.error();
    std::vector<OdString> missing;
    for (const OdString& rule : draftingIgnoreRules()) {
        if (std::find(lines->begin(), lines->end(), rule) == lines->end())
            missing.push_back(rule);
    }
    const int count = static_cast<int>(missing.size());
    if (count == 0)
        return 0;
    missing.insert(missing.begin(),
                   L"#" + tr(L"Autosaves, backups, logs, lock files and temporary files:"));
    if (Expected<void> written = writeLines(*lines, missing, root); !written)
        return std::move(written).error();
    return count;
}

}  // namespace qrv_cli
