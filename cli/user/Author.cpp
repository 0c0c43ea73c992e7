#include <cli/user/Author.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <platform/qut/toQt.h>
#include <sys/Terminal.h>

#include <QByteArray>
#include <QString>

namespace qrv::cli {

namespace {

/// Every list of commits shows the author in a line with other things.
constexpr int longestAuthor = 200;
/// Enough to recognise a text that is refused.
constexpr int shownUnits = 40;

OdString beginningOf(const OdString& text) {
    return text.getLength() > shownUnits ? text.left(shownUnits) + L"..." : text;
}

}  // namespace

Expected<OdString> authorOf(const std::optional<std::string>& option) {
    const std::string variable = qgetenv("QRV_AUTHOR").toStdString();
    std::string name = sys::userName() + "@" + sys::hostName();
    if (option)
        name = *option;
    else if (!variable.empty())
        name = variable;
    const OdString author = OdString::fromNarrow(name);
    const bool isEmpty = qut::toQt(author).trimmed().isEmpty();
    if (isEmpty || author.getLength() > longestAuthor || printable(author) != author)
        return ErrorMessage{OdString::format(
            tr(L"'%ls' cannot be an author: it must be one line of plain text, not only blanks, of "
               L"at most %i characters"),
            printable(beginningOf(author)), longestAuthor)};
    return author;
}

}  // namespace qrv::cli
