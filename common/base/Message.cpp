#include <common/base/MessageInternal.h>

#include <wx/string.h>
#include <wx/translation.h>

namespace common {

namespace {

const wxString& catalogueText(const wxString& source) {
    if (const wxTranslations* translations = wxTranslations::Get()) {
        if (const wxString* text = translations->GetTranslatedString(source))
            return *text;
    }
    return wxTranslations::GetUntranslatedString(source);
}

}  // namespace

OdString translate(const wchar_t* source) {
    return OdString(catalogueText(wxString(source)).ToStdWstring());
}

}  // namespace common
