#pragma once

#include <common/worktree/IgnoreLine.h>

#include <cstdint>
#include <optional>
#include <regex>
#include <string_view>

namespace qrv {

/// The expression of an ignore rule that comes from anybody. It answers as `std::regex_match` does,
/// but in a number of steps that its caller sets, and without much stack: left to itself, a rule
/// such as "^(a*)*b$" takes longer than anybody lives.
class BoundedExpression {
public:
    /// Throws `std::regex_error` when the rule is no expression. How much memory that takes is told
    /// by the line's size.
    explicit BoundedExpression(const common::IgnoreLine& line);

    /// Whether the expression matches the whole name. Takes what it needs from `steps`; nothing
    /// when there are too few, or when no number that makes sense would do.
    std::optional<bool> matches(std::string_view nameNarrow, std::int64_t& steps);

private:
    common::IgnoreLine line_;
    std::int64_t mostDeepSteps_;
    bool hasBackReference_ = false;
    std::regex deep_;
    // Made when first needed.
    std::optional<std::regex> broad_;
};

}  // namespace qrv
