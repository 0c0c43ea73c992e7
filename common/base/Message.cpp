#include <common/base/MessageInternal.h>

#include <wx/string.h>
#include <wx/translation.h>

namespace common {

// Without a catalogue, or an entry in it, the source is the answer. wxWidgets is not asked for it:
// it keeps untranslated texts in data of the thread, which are gone when a thread or the process
// ends, and what a host lets go of then still has something to report.
OdString translate(const wchar_t* source) {
    const wxTranslations* translations = wxTranslations::Get();
    const wxString* text =
        translations == nullptr ? nullptr : translations->GetTranslatedString(wxString(source));
    return text == nullptr ? OdString(source) : OdString(text->ToStdWstring());
}

}  // namespace common
