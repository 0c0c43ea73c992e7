#include <engine/base/Translation.h>

#include <wx/string.h>
#include <wx/translation.h>

#include <string>

namespace qrv {

OdString tr(const wchar_t* source) {
    if (const wxTranslations* translations = wxTranslations::Get()) {
        if (const wxString* text = translations->GetTranslatedString(source))
            return OdString(text->ToStdWstring());
    }
    return source;
}

std::string trUtf8(const wchar_t* source) {
    return tr(source).toNarrow();
}

}  // namespace qrv
