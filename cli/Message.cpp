#include <cli/Message.h>

#include <cstdio>
#include <string>

namespace qrv_cli {

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

OdString escape(wchar_t unit) {
    static constexpr wchar_t digits[] = L"0123456789ABCDEF";
    const bool isByte = unit < 0x80 || standsForByte(unit);
    OdString escaped = isByte ? L"\\x" : L"\\u";
    for (int shift = isByte ? 4 : 12; shift >= 0; shift -= 4)
        escaped += digits[(unit >> shift) & 0xF];
    return escaped;
}

OdString oneLine(const OdString& text) {
    OdString line;
    for (int index = 0; index < text.getLength(); ++index) {
        if (text[index] == L'\n')
            line += L"; ";
        else
            line += text[index] == L'\t' ? L' ' : text[index];
    }
    return line;
}

}  // namespace

OdString printable(const OdString& name) {
    OdString safe;
    for (int index = 0; index < name.getLength(); ++index) {
        if (beginsPair(name, index)) {
            safe += name.mid(index, 2);
            ++index;
        } else if (isUnsafe(name[index])) {
            safe += escape(name[index]);
        } else {
            safe += name[index];
        }
    }
    return safe;
}

void printMessage(const OdString& text) {
    const std::string line = "qrv: " + printable(oneLine(text)).toNarrow() + "\n";
    // When standard error cannot be written there is nobody left to tell.
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
}

}  // namespace qrv_cli
