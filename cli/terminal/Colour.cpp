#include <cli/terminal/Colour.h>
#include <sys/Terminal.h>

#include <QByteArray>

namespace qrv::cli {

namespace {

bool findWhetherColoursAreUsed() {
    const bool isRefused = !qgetenv("NO_COLOR").isEmpty() || qgetenv("TERM") == "dumb";
    return !isRefused && sys::isTerminal(sys::Stream::output);
}

bool usesColours() {
    static const bool isOn = findWhetherColoursAreUsed();
    return isOn;
}

std::string_view codeOf(Colour colour) {
    switch (colour) {
        case Colour::bold:
            return "1";
        case Colour::red:
            return "31";
        case Colour::green:
            return "32";
        case Colour::yellow:
            return "33";
        case Colour::cyan:
            break;
    }
    return "36";
}

}  // namespace

OdString coloured(Colour colour, const OdString& text) {
    // Without colours no text is converted.
    return usesColours() ? OdString::fromNarrow(coloured(colour, text.toNarrow())) : text;
}

std::string coloured(Colour colour, std::string_view bytes) {
    if (!usesColours() || bytes.empty())
        return std::string(bytes);
    const bool endsLine = bytes.back() == '\n';
    const std::string_view body = bytes.substr(0, bytes.size() - (endsLine ? 1 : 0));
    std::string text = "\x1B[";
    text.append(codeOf(colour)).append("m").append(body).append("\x1B[0m");
    return endsLine ? text + '\n' : text;
}

}  // namespace qrv::cli
