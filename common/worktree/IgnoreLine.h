#pragma once

#include <common/base/Export.h>
#include <platform/kernel/OdString.h>

#include <cstddef>
#include <memory>
#include <regex>
#include <string>
#include <string_view>

namespace common {

class SimpleGlob;

/// One line of an ignore file by itself. An addition, for programs that judge the rules of
/// strangers one by one: what a host is promised is `RepoIgnore`, which takes the same lines for
/// the same rules.
class QRV_COMMON_EXPORT IgnoreLine {
public:
    /// Takes the line as it is, without its end. Nothing is compiled.
    explicit IgnoreLine(const OdString& line);

    /// Whether it is neither empty nor a comment. What follows is for rules only.
    bool isRule() const;
    /// Whether it is a glob in which nothing but "*", "?" and "." has a meaning.
    bool isPlainGlob() const { return glob_ != nullptr; }
    /// Whether the plain glob matches the whole name, in at most length times length steps.
    bool plainGlobMatches(std::string_view nameNarrow) const;

    /// The ECMAScript expression that stands for the rule, in its narrow form.
    const std::string& expression() const { return expression_; }
    /// `std::regex::icase` for a glob; nothing for an expression.
    std::regex::flag_type letterCase() const;
    /// At most as many states as this has the machine that the expression library makes of the
    /// rule. Its memory and the time to make it follow from that.
    std::size_t size() const;
    /// The compiled expression, with `furtherFlags` besides the letter case. Throws
    /// `std::regex_error`, whose text says what is wrong.
    std::regex compiled(std::regex::flag_type furtherFlags = {}) const;

private:
    OdString line_;
    std::string expression_;
    std::shared_ptr<const SimpleGlob> glob_;
};

}  // namespace common
