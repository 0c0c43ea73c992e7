#pragma once

#include <platform/kernel/Export.h>

#include <compare>
#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

class OdString;

namespace kernel {

/// One argument of `OdString::format`: a text or an integer, borrowed for the call.
class FormatArgument {
public:
    FormatArgument(const OdString& text);  ///< a text
    /// A null pointer is the empty text, as in `OdString`.
    FormatArgument(const wchar_t* text)
        : text_(text == nullptr ? std::wstring_view() : text), isText_(true) {}
    /// A text.
    FormatArgument(const std::wstring& text) : text_(text), isText_(true) {}
    /// An integer of at most 64 bits; a boolean is none.
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool> && sizeof(Integer) <= sizeof(std::int64_t))
        FormatArgument(Integer number)
        : number_(static_cast<std::int64_t>(number)), isUnsigned_(std::is_unsigned_v<Integer>) {}

    /// Whether it is a text, not an integer.
    bool isText() const { return isText_; }
    /// The text; empty for an integer.
    std::wstring_view text() const { return text_; }
    /// The number in decimal.
    std::wstring digits() const;

private:
    std::wstring_view text_;
    std::int64_t number_ = 0;
    bool isText_ = false;
    bool isUnsigned_ = false;
};

}  // namespace kernel

/// A text: a counted sequence of UTF-16 code units, one in each `wchar_t`, also where `wchar_t` has
/// 32 bits. Lengths, positions and orders count units. A NUL inside a text is kept.
///
/// At the edges a text is UTF-8 (`fromNarrow`, `toNarrow`). A byte that is not part of valid UTF-8
/// becomes the one unit 0xDC00 + byte and that byte again on the way out, so that bytes survive
/// unchanged whatever they are.
///
/// A text of more than 2^31 - 1 units is refused with `std::length_error`.
class QRV_PLATFORM_EXPORT OdString {
public:
    OdString() = default;
    /// Up to the terminating NUL. A null pointer gives the empty text.
    OdString(const wchar_t* text);
    /// From UTF-8, up to the terminating NUL. A null pointer gives the empty text.
    OdString(const char* textUtf8);
    /// Takes all characters. One above 0xFFFF is split into its surrogate pair; one that is no
    /// Unicode code point becomes U+FFFD.
    OdString(std::wstring text);

    /// From UTF-8, NULs included.
    static OdString fromNarrow(std::string_view textUtf8);
    /// As UTF-8. A surrogate that has no partner and stands for no byte is written in three bytes,
    /// the general pattern of UTF-8.
    std::string toNarrow() const;
    /// The units, one in each `wchar_t`.
    const std::wstring& toWide() const& { return units_; }
    /// The units of a temporary text, taken away.
    std::wstring toWide() && { return std::move(units_); }

    /// The units, followed by a NUL; valid until the text changes.
    const wchar_t* c_str() const { return units_.c_str(); }
    /// The number of units.
    int getLength() const { return static_cast<int>(units_.size()); }
    /// Whether there are none.
    bool isEmpty() const { return units_.empty(); }
    /// The unit at `index`, which must lie in [0, getLength()].
    wchar_t operator[](int index) const { return units_[static_cast<std::size_t>(index)]; }

    /// Adds the other text at the end.
    OdString& operator+=(const OdString& other);
    /// Adds one character, split as in the constructors.
    OdString& operator+=(wchar_t character);
    /// The one text behind the other.
    friend OdString operator+(OdString left, const OdString& right) { return left += right; }
    /// The character behind the text, split as in the constructors.
    friend OdString operator+(OdString left, wchar_t right) { return left += right; }

    /// The order of code units.
    friend bool operator==(const OdString& left, const OdString& right) = default;
    friend std::strong_ordering operator<=>(const OdString& left, const OdString& right) = default;

    /// The first `count` units; all of them when there are fewer. A negative count gives none.
    OdString left(int count) const;
    /// The last `count` units; all of them when there are fewer. A negative count gives none.
    OdString right(int count) const;
    /// What stands from `first` on. A start before the text means its begin.
    OdString mid(int first) const;
    /// At most `count` units from `first` on.
    OdString mid(int first, int count) const;

    /// Where the first match at or after `start` begins, or -1. A start before the text means its
    /// begin.
    int find(wchar_t unit, int start = 0) const;
    /// The same for a text.
    int find(const OdString& part, int start = 0) const;
    /// Where the last match begins, or -1.
    int reverseFind(wchar_t unit) const;

    /// Changes each character to its lower or upper case of Unicode where that is a single
    /// character, and leaves it where it is not (the German sharp s). The number of units stays.
    /// Gives this text.
    OdString& makeLower();
    /// The same to upper case.
    OdString& makeUpper();
    /// Compares without regard to letter case, by lower-case code units: negative, zero or
    /// positive.
    int iCompare(const OdString& other) const;

    /// Fills the placeholders of `pattern` with the arguments, in order: "%ls" takes a text, "%i"
    /// an integer, "%%" is a percent sign. A placeholder whose argument is missing is written as it
    /// stands; so is one whose argument is of the other kind, which it uses up all the same. Every
    /// other use of "%" stands for itself; surplus arguments are left out. So a translated pattern
    /// cannot do harm. Arguments are inserted as they are, never read as patterns.
    template <class... Arguments>
    static OdString format(const OdString& pattern, const Arguments&... arguments) {
        return formatArguments(pattern, {kernel::FormatArgument(arguments)...});
    }

private:
    static OdString formatArguments(const OdString& pattern,
                                    std::initializer_list<kernel::FormatArgument> arguments);

    std::wstring units_;
};

inline kernel::FormatArgument::FormatArgument(const OdString& text)
    : text_(text.c_str(), static_cast<std::size_t>(text.getLength())), isText_(true) {
}
