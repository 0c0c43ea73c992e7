#include <cli/Author.h>
#include <cli/Message.h>
#include <cli/Translation.h>
#include <platform/sys/Terminal.h>

#include <QByteArray>

namespace qrv_cli {

Expected<OdString> authorOf(const std::optional<std::string>& option) {
    const std::string variable = qgetenv("QRV_AUTHOR").toStdString();
    std::string name = sys::userName() + "@" + sys::hostName();
    if (option)
        name = *option;
    else if (!variable.empty())
        name = variable;
    const OdString author = OdString::fromNarrow(name);
    if (author.isEmpty() || printable(author) != author)
        return ErrorMessage{
            OdString::format(tr(L"'%ls' cannot be an author: it must be one line of plain text"),
                             printable(author))};
    return author;
}

}  // namespace qrv_cli
