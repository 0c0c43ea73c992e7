#pragma once

#include <common/worktree/ExpressionInternal.h>
#include <common/worktree/IgnoreLine.h>
#include <common/worktree/RepoIgnore.h>
#include <platform/kernel/OdString.h>

#include <regex>
#include <string>
#include <variant>
#include <vector>

namespace common {

/// Decides which names a walk leaves out.
class NameRules {
public:
    explicit NameRules(const std::vector<std::regex>& expressions);
    /// The same answers as from the expressions of `ignore`, found faster where a rule is simple.
    explicit NameRules(const RepoIgnore& ignore);

    /// Whether a rule matches the whole of the bare name.
    bool exclude(const OdString& name) const;

private:
    using Rule = std::variant<IgnoreLine, Expression, std::regex>;

    static bool matches(const Rule& rule, const std::string& nameNarrow);

    std::vector<Rule> rules_;
};

}  // namespace common
