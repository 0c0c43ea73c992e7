#include <engine/paths/Layout.h>
#include <engine/worktree/FoldedName.h>
#include <platform/qut/toQt.h>

#include <QString>
#include <optional>
#include <utility>

namespace qrv {

namespace {

/// Nothing for a text in which more than ASCII stands.
std::optional<std::u16string> foldedAscii(const std::wstring& units) {
    std::u16string text;
    text.reserve(units.size());
    for (const wchar_t unit : units) {
        if (unit <= 0 || unit > L'~')
            return std::nullopt;
        const bool isCapital = unit >= L'A' && unit <= L'Z';
        text.push_back(static_cast<char16_t>(isCapital ? unit - L'A' + L'a' : unit));
    }
    return text;
}

}  // namespace

std::u16string folded(const OdString& path) {
    // Most names are, and there may be very many.
    if (std::optional<std::u16string> ascii = foldedAscii(path.toWide()))
        return std::move(*ascii);
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
