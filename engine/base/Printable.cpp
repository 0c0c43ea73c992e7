#include <engine/base/Printable.h>

#include <algorithm>
#include <string>

namespace qrv {

namespace {

bool isSurrogate(wchar_t unit) {
    return unit >= 0xD800 && unit <= 0xDFFF;
}

bool beginsPair(const OdString& text, int index) {
    const wchar_t first = text[index];
    const wchar_t second = text[index + 1];
    return first >= 0xD800 && first <= 0xDBFF && second >= 0xDC00 && second <= 0xDFFF;
}

/// A single surrogate 0xDC80 to 0xDCFF stands for a byte that is not part of valid UTF-8.
bool standsForByte(wchar_t unit) {
    return unit >= 0xDC80 && unit <= 0xDCFF;
}

bool changesWritingDirection(wchar_t unit) {
    return unit == 0x061C || unit == 0x200E || unit == 0x200F ||
           (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
}

bool isUnsafe(wchar_t unit) {
    const bool isControl = unit < 0x20 || (unit >= 0x7F && unit <= 0x9F);
    const bool endsLine = unit == 0x2028 || unit == 0x2029;
    return isControl || endsLine || isSurrogate(unit) || changesWritingDirection(unit);
}

/// By such characters two names can differ that look the same.
bool isInvisible(wchar_t unit) {
    const bool isFiller = unit == 0x115F || unit == 0x1160 || unit == 0x3164 || unit == 0xFFA0;
    const bool isMark = unit == 0xAD || unit == 0x34F || unit == 0x180E || unit == 0xFEFF ||
                        (unit >= 0xFFF9 && unit <= 0xFFFB);
    return isFiller || isMark || unit == 0x200B || (unit >= 0x2060 && unit <= 0x206F);
}

/// Joining letters and keeping them apart is spelling in some scripts, and makes one picture of
/// several; beside ASCII it is only invisible.
bool joinsNothing(const OdString& text, int index) {
    constexpr wchar_t nonJoiner = 0x200C;
    constexpr wchar_t joiner = 0x200D;
    if (text[index] != nonJoiner && text[index] != joiner)
        return false;
    const bool isAtEnd = index == 0 || index + 1 == text.getLength();
    return isAtEnd || text[index - 1] < 0x80 || text[index + 1] < 0x80;
}

/// Calls `add` with each character, as one unit or a pair of them.
template <class Add>
void forEachCharacter(const OdString& text, Add add) {
    for (int index = 0; index < text.getLength(); ++index) {
        const bool isPair = beginsPair(text, index);
        add(index, isPair);
        index += isPair ? 1 : 0;
    }
}

/// Most names are, and lists have thousands of them.
bool isPrintableAscii(const OdString& name) {
    const std::wstring& units = name.toWide();
    return std::all_of(units.begin(), units.end(),
                       [](wchar_t unit) { return unit >= 0x20 && unit < 0x7F; });
}

OdString escape(wchar_t unit) {
    static constexpr wchar_t digits[] = L"0123456789ABCDEF";
    const bool isByte = unit < 0x80 || standsForByte(unit);
    OdString escaped = isByte ? L"\\x" : L"\\u";
    for (int shift = isByte ? 4 : 12; shift >= 0; shift -= 4)
        escaped += digits[(unit >> shift) & 0xF];
    return escaped;
}

}  // namespace

OdString printable(const OdString& name) {
    if (isPrintableAscii(name))
        return name;
    OdString safe;
    forEachCharacter(name, [&](int index, bool isPair) {
        const wchar_t unit = name[index];
        if (isPair)
            safe += name.mid(index, 2);
        else if (isUnsafe(unit) || isInvisible(unit) || joinsNothing(name, index))
            safe += escape(unit);
        else
            safe += unit;
    });
    return safe;
}

bool isHarmless(const OdString& text) {
    bool isSafe = true;
    forEachCharacter(text, [&](int index, bool isPair) {
        isSafe = isSafe && (isPair || !isUnsafe(text[index]));
    });
    return isSafe;
}

}  // namespace qrv
