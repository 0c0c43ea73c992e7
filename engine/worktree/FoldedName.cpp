#include <engine/paths/Layout.h>
#include <engine/worktree/FoldedName.h>
#include <platform/qut/toQt.h>

#include <QString>

namespace qrv {

std::u16string folded(const OdString& path) {
    constexpr auto composed = QString::NormalizationForm_C;
    return qut::toQt(path)
        .normalized(composed)
        .toCaseFolded()
        .normalized(composed)
        .toStdU16String();
}

bool ignoresLetterCase(const sys::Folder& root) {
    const sys::Outcome<sys::FileStamp> metadata = root.stamp(layout::metadataFolder);
    const sys::Outcome<sys::FileStamp> inCapitals = root.stamp(".QRV");
    return metadata && inCapitals && metadata->number == inCapitals->number;
}

}  // namespace qrv
