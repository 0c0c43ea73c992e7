#include <cli/terminal/Colour.h>
#include <platform/sys/Terminal.h>

#include <QByteArray>

namespace qrv_cli {

namespace {

bool usesColours() {
    const bool isRefused = !qgetenv("NO_COLOR").isEmpty() || qgetenv("TERM") == "dumb";
    return !isRefused && sys::isTerminal(sys::Stream::output);
}

const wchar_t* codeOf(Colour colour) {
    switch (colour) {
        case Colour::bold:
            return L"1";
        case Colour::red:
            return L"31";
        case Colour::green:
            return L"32";
        case Colour::yellow:
            return L"33";
        case Colour::cyan:
            break;
    }
    return L"36";
}

}  // namespace

OdString coloured(Colour colour, const OdString& text) {
    static const bool isOn = usesColours();
    if (!isOn || text.isEmpty())
        return text;
    const int last = text.getLength() - 1;
    const bool endsLine = text[last] == L'\n';
    const OdString body = endsLine ? text.left(last) : text;
    return OdString(L"\x1B[") + codeOf(colour) + L"m" + body + L"\x1B[0m" +
           (endsLine ? L"\n" : L"");
}

}  // namespace qrv_cli
