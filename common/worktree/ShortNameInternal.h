#pragma once

#include <common/worktree/ExpressionInternal.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <string>

namespace common {

/// Asks whether a path ends in a short name: matches the whole of the path's narrow form against
/// ".*" and the name, with "(\.[a-zA-Z]+)+$" behind it when the name has no extension. A name in
/// which nothing but "." means something in expressions is compared directly, whatever its length.
class ShortName {
public:
    /// Throws `std::regex_error` when the name needs an expression and is none, or one that the
    /// stack at hand cannot compile.
    explicit ShortName(const OdString& name);

    /// Throws `std::regex_error` for a path for whose length the stack does not suffice.
    bool matches(const OdString& path) const;

private:
    bool matchesAnyExtension(const std::string& pathNarrow) const;
    bool endsAt(const std::string& pathNarrow, std::size_t end) const;

    std::string nameNarrow_;
    bool hasExtension_;
    std::optional<Expression> expression_;
};

}  // namespace common
