#include <cli/Author.h>
#include <cli/Message.h>
#include <cli/Translation.h>
#include <platform/sys/Terminal.h>

#include <cstdlib>

namespace qrv_cli {

Expected<OdString> authorOf(const std::optional<std::string>& option) {
    const char* const variable = std::getenv("QRV_AUTHOR");
    std::string name;
    if (option)
        name = *option;
    else if (variable != nullptr && *variable != '\0')
        name = variable;
    else
        name = sys::userName() + "@" + sys::hostName();
    const OdString author = OdString::fromNarrow(name);
    if (author.isEmpty() || printable(author) != author)
        return ErrorMessage{OdString::format(
            tr(L"'%ls' cannot be an author: it must be one line of plain text"),
            printable(author))};
    return author;
}

}  // namespace qrv_cli
