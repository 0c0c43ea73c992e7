#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <common/worktree/IgnoreLine.h>
#include <engine/worktree/BoundedExpression.h>
#include <engine/worktree/IgnoreRule.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace qrv {

/// The ignore rules of a repository, for one scan or one question. They answer as the library's do,
/// but may come from anybody: a rule that would take too much memory is left out at once, and one
/// that takes more than its share of time from then on. Either is told by its line.
class IgnoreRules {
public:
    using OnError = std::function<void(const OdString&)>;

    /// Reads the rules of `root`. A missing file is made first, as by `common::RepoIgnore`.
    /// `onError` is told of the lines that are no rules, in the library's words, and of those that
    /// are left out, also later.
    IgnoreRules(const common::RootPath& root, OnError onError);

    /// Whether there is a file that could be read; a failure only means no rules.
    bool isRead() const { return isRead_; }
    /// The rules in the order of their lines.
    std::vector<IgnoreRule> list() const;
    /// The first rule that matches the whole of the bare name; null when none does.
    const IgnoreRule* match(const OdString& name);

private:
    struct Expression {
        BoundedExpression expression;
        std::int64_t steps = 0;
    };
    struct Rule {
        IgnoreRule rule;
        std::variant<common::IgnoreLine, Expression> matcher;
        bool isLeftOut = false;
    };

    void add(const IgnoreRule& rule, std::vector<OdString>& messages);
    std::optional<bool> matches(Rule& rule, std::string_view nameNarrow);
    void shareSteps();
    void tellLeftOut(const IgnoreRule& rule) const;

    OnError onError_;
    bool isRead_ = false;
    std::vector<Rule> rules_;
    std::size_t totalSize_ = 0;
    std::size_t expressionCount_ = 0;
    std::int64_t stepsForName_ = 0;
};

/// Why the scan leaves out `path`, which is relative to the root and need not exist; nothing when
/// it does not. Like the scan, it looks at the folders first, and only at their names.
std::optional<IgnoreReason> reasonToIgnore(const OdString& path, IgnoreRules& rules);

/// Adds a line to the ignore file, as a whole or not at all, and gives its number. Refuses, with a
/// message, what is no rule: an empty line, a comment, a line break inside, what the library does
/// not compile and what would be left out; and a rule that is there already.
Expected<int> addIgnoreRule(const OdString& rule, const common::RootPath& root);

/// Rules for what a drafting office's programs leave beside drawings and nobody wants to keep:
/// autosaves, backups, logs of plots, lock files, temporary files.
std::vector<OdString> draftingIgnoreRules();

/// Adds those that are not there yet, under a heading, and gives their number. Fails, with nothing
/// changed, when the ignore file cannot be read or written.
Expected<int> addDraftingIgnoreRules(const common::RootPath& root);

}  // namespace qrv
