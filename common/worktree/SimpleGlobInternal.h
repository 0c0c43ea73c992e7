#pragma once

#include <platform/kernel/OdString.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace common {

/// An ignore rule that is a glob and has no characters that mean something in expressions but "*",
/// "?" and ".". Gives the same answers as the case-insensitive expression it stands for, but in at
/// most length times length steps and without recursion: as a std::regex, five stars can cost
/// minutes.
///
/// Works on bytes: "*" and "?" stand for bytes that are neither LF nor CR, and letter case is
/// ignored for ASCII only.
class SimpleGlob {
public:
    /// Nothing when the rule line needs an expression.
    static std::optional<SimpleGlob> from(const OdString& line);

    /// Whether the glob matches the whole name.
    bool matches(std::string_view nameNarrow) const;

private:
    explicit SimpleGlob(std::string pattern);
    bool matchesEnd(std::string_view nameNarrow) const;

    std::string pattern_;  // in lower case
    std::size_t starCount_;
    std::size_t lengthBehindLastStar_;
};

}  // namespace common
