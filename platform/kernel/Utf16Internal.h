#pragma once

#include <QChar>
#include <climits>
#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace kernel {

/// A code point and the number of units or bytes that it was read from.
struct Character {
    char32_t codePoint;
    std::size_t length;
};

/// The character that begins at `at`, which must lie inside the text: a surrogate pair as one code
/// point, any other unit as itself.
inline Character characterAt(std::wstring_view units, std::size_t at) {
    const auto unit = static_cast<char32_t>(units[at]);
    if (!QChar::isHighSurrogate(unit) || at + 1 == units.size())
        return {unit, 1};
    const auto next = static_cast<char32_t>(units[at + 1]);
    if (!QChar::isLowSurrogate(next))
        return {unit, 1};
    return {QChar::surrogateToUcs4(static_cast<ushort>(unit), static_cast<ushort>(next)), 2};
}

/// Writes the one or two units of a code point to the iterator; gives the iterator behind them.
template <class Output>
Output writeUnits(char32_t codePoint, Output output) {
    if (!QChar::requiresSurrogates(codePoint)) {
        *output = static_cast<wchar_t>(codePoint);
        return ++output;
    }
    *output = static_cast<wchar_t>(QChar::highSurrogate(codePoint));
    ++output;
    *output = static_cast<wchar_t>(QChar::lowSurrogate(codePoint));
    return ++output;
}

/// Gives back the number of units that a text is to have. Throws `std::length_error` when
/// `OdString::getLength` could not tell it.
inline std::size_t checkedLength(std::size_t units) {
    if (units > static_cast<std::size_t>(INT_MAX))
        throw std::length_error("a text of more than 2147483647 units");
    return units;
}

}  // namespace kernel
