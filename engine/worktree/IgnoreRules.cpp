#include <common/worktree/RepoIgnore.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/paths/PathParts.h>
#include <engine/worktree/IgnoreRules.h>
#include <platform/ut/TextFile.h>

#include <algorithm>
#include <cstddef>
#include <regex>
#include <string>
#include <utility>

namespace qrv {

namespace {

/// No rule that somebody wrote by hand comes near these sizes, which are counted in states of about
/// a hundred bytes.
constexpr std::size_t largestSize = 4'000;
constexpr std::size_t largestTotalSize = 100'000;
constexpr std::size_t mostExpressions = 1'000;

/// What all expressions of a scan may take together, some seconds; and what they may take besides
/// for each name, but each of them at least so much that no ordinary one ever misses it.
constexpr std::int64_t stepsForScan = 50'000'000;
constexpr std::int64_t stepsForName = 50'000;
constexpr std::int64_t leastStepsForName = 1'000;

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

/// Makes the ignore file where it is missing, with the explanation and the default rules. A failure
/// is silent, and leaves no rules.
void makeMissingFile(const common::RootPath& root) {
    static_cast<void>(common::RepoIgnore::write(
        common::RepoIgnore::explanation(false) + common::RepoIgnore::defaultIgnore(), root));
}

/// Why a rule is not taken; nothing when it is.
std::optional<OdString> refusalOf(const OdString& rule) {
    const common::IgnoreLine line(rule);
    try {
        if (line.isPlainGlob())
            return std::nullopt;
        if (line.size() > largestSize)
            return tr(L"it would take too much time or memory");
        static_cast<void>(line.compiled());
        return std::nullopt;
    } catch (const std::regex_error& error) {
        return OdString(error.what());
    }
}

/// A missing file is made first: it begins with the explanation and the default rules.
Expected<std::vector<OdString>> presentLines(const common::RootPath& root) {
    makeMissingFile(root);
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

IgnoreRules::IgnoreRules(const common::RootPath& root, OnError onError)
    : onError_(std::move(onError)) {
    makeMissingFile(root);
    std::vector<OdString> messages;
    int number = 0;
    const std::optional<std::vector<OdString>> lines = linesOf(root);
    isRead_ = lines.has_value();
    for (const OdString& line : lines.value_or(std::vector<OdString>()))
        add({.line = ++number, .text = line}, messages);
    if (!messages.empty())
        onError_(tr(L"An error occurred while parsing the ignored file:"));
    for (const OdString& message : messages)
        onError_(message);
    shareSteps();
}

/// Adds what is wrong with the line to the messages.
void IgnoreRules::add(const IgnoreRule& rule, std::vector<OdString>& messages) {
    const common::IgnoreLine line(rule.text);
    if (!line.isRule())
        return;
    if (line.isPlainGlob()) {
        rules_.push_back({rule, line});
        return;
    }
    const std::size_t size = line.size();
    if (size > largestSize || totalSize_ + size > largestTotalSize ||
        expressionCount_ == mostExpressions)
        return tellLeftOut(rule);
    try {
        rules_.push_back({rule, Expression{BoundedExpression(line)}});
        totalSize_ += size;
        ++expressionCount_;
    } catch (const std::regex_error& error) {
        messages.push_back(
            OdString::format(tr(L"Line %i: %ls"), rule.line, OdString(error.what())));
    }
}

void IgnoreRules::shareSteps() {
    const auto count = static_cast<std::int64_t>(std::max<std::size_t>(expressionCount_, 1));
    stepsForName_ = std::max(stepsForName / count, leastStepsForName);
    for (Rule& rule : rules_) {
        if (auto* const matcher = std::get_if<Expression>(&rule.matcher))
            matcher->steps = stepsForScan / count;
    }
}

void IgnoreRules::tellLeftOut(const IgnoreRule& rule) const {
    onError_(OdString::format(
        tr(L"Line %i of the ignore rules is left out, since it would take too much time or memory: "
           L"%ls"),
        rule.line, printable(rule.text)));
}

std::vector<IgnoreRule> IgnoreRules::list() const {
    std::vector<IgnoreRule> rules;
    for (const Rule& rule : rules_)
        rules.push_back(rule.rule);
    return rules;
}

const IgnoreRule* IgnoreRules::match(const OdString& name) {
    const std::string nameNarrow = name.toNarrow();
    for (Rule& rule : rules_) {
        if (rule.isLeftOut)
            continue;
        const std::optional<bool> answer = matches(rule, nameNarrow);
        if (!answer) {
            rule.isLeftOut = true;
            tellLeftOut(rule.rule);
        } else if (*answer) {
            return &rule.rule;
        }
    }
    return nullptr;
}

/// Nothing when the rule has used up its share.
std::optional<bool> IgnoreRules::matches(Rule& rule, std::string_view nameNarrow) {
    if (const auto* const line = std::get_if<common::IgnoreLine>(&rule.matcher))
        return line->plainGlobMatches(nameNarrow);
    auto& matcher = std::get<Expression>(rule.matcher);
    matcher.steps += stepsForName_;
    return matcher.expression.matches(nameNarrow, matcher.steps);
}

std::optional<IgnoreReason> reasonToIgnore(const OdString& path, IgnoreRules& rules) {
    const OdString prefix = OdString(layout::propertiesFolder) + L'/';
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
        const OdString name = nameOf(part);
        if (const IgnoreRule* const rule = rules.match(name))
            return IgnoreReason{.path = part, .line = rule->line, .rule = rule->text};
        if (name == OdString(layout::metadataFolder))
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

}  // namespace qrv
