#include <platform/ut/Paths.h>

namespace ut {

OdString correctSlashes(const OdString& path) {
    return path;
}

std::vector<OdString> splitByChar(const OdString& text, const OdString& separator, bool keepEmpty) {
    if (text.isEmpty())
        return {};
    std::vector<OdString> pieces;
    int begin = 0;
    for (;;) {
        const int match = separator.isEmpty() ? -1 : text.find(separator, begin);
        const int end = match < 0 ? text.getLength() : match;
        if (keepEmpty || end > begin)
            pieces.push_back(text.mid(begin, end - begin));
        if (match < 0)
            return pieces;
        begin = match + separator.getLength();
    }
}

}  // namespace ut
