#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <common/json/Writer.h>
#include <engine/base/Printable.h>
#include <platform/kernel/OdString.h>
#include <sys/Terminal.h>

namespace qrv::cli {

namespace {

bool isPlain(wchar_t unit) {
    return unit == L'\n' || (unit >= 0x20 && unit < 0x7F);
}

bool beginsPair(wchar_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

OdString escape(wchar_t unit) {
    static constexpr wchar_t digits[] = L"0123456789ABCDEF";
    OdString escaped = L"\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
        escaped += digits[(unit >> shift) & 0xF];
    return escaped;
}

/// The same document, with an escape in place of what `printable` would not show as it is: that
/// stands only inside of strings.
OdString harmless(const OdString& document) {
    OdString shown;
    for (int index = 0; index < document.getLength();) {
        const int length = beginsPair(document[index]) ? 2 : 1;
        const OdString character = document.mid(index, length);
        if (isPlain(document[index]) || printable(character) == character)
            shown += character;
        else
            shown += escape(document[index]);
        index += length;
    }
    return shown;
}

}  // namespace

void writeJson(const jsonlib::json::Value& document, Output& output) {
    const OdString text = jsonlib::json::write(document);
    const bool isShown = sys::isTerminal(sys::Stream::output);
    output.write((isShown ? harmless(text) : text).toNarrow());
    output.write("\n");
}

}  // namespace qrv::cli
