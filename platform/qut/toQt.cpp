#include <platform/qut/toQt.h>

namespace qut {

QString toQt(const OdString& text) {
    // Not QString::fromWCharArray, which takes a leading U+FEFF for a byte-order mark and drops it.
    QString result(text.getLength(), Qt::Uninitialized);
    for (int index = 0; index < text.getLength(); ++index)
        result[index] = QChar(static_cast<ushort>(text[index]));
    return result;
}

}  // namespace qut
