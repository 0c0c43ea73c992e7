#include <cli/terminal/Message.h>
#include <engine/base/Printable.h>

#include <cstdio>
#include <string>

namespace qrv::cli {

OdString oneLine(const OdString& text) {
    OdString line;
    for (int index = 0; index < text.getLength(); ++index) {
        if (text[index] == L'\n')
            line += L"; ";
        else
            line += text[index] == L'\t' ? L' ' : text[index];
    }
    return printable(line);
}

void printMessage(const OdString& text) {
    const std::string line = "qrv: " + oneLine(text).toNarrow() + "\n";
    // When standard error cannot be written there is nobody left to tell.
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
}

}  // namespace qrv::cli
