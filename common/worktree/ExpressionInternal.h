#pragma once

#include <cstddef>
#include <optional>
#include <regex>
#include <string>
#include <string_view>

namespace common {

/// Compiles an ECMAScript expression so that nothing depends on the host's locale. Throws the
/// expression library's own `std::regex_error` when the text is no expression, and one for
/// `error_complexity` when it is one that the stack at hand cannot compile.
///
/// A number that the library would overflow on counts as the largest that it takes: it refuses that
/// in its own words.
std::regex compiledExpression(const std::string& expression, std::regex::flag_type letterCase = {});

/// Matches whole texts against an expression, with the answers of `std::regex_match`, but never
/// runs out of stack: the expression library recurses for nearly every character.
class Expression {
public:
    /// Of that text and letter case; `compiled` is what they were compiled to.
    Expression(std::string text, std::regex::flag_type letterCase, std::regex compiled);

    /// Throws `std::regex_error` for a text so long that neither of the library's ways of matching
    /// is possible, which takes an expression with a back reference.
    bool matches(std::string_view text) const;

private:
    bool hasRoomFor(std::size_t characters) const;

    std::string text_;
    std::regex::flag_type letterCase_;
    std::size_t size_;
    std::regex compiled_;
    // Found out when first needed.
    mutable std::optional<std::size_t> stackBytes_;
    mutable std::optional<std::regex> shallow_;
};

}  // namespace common
