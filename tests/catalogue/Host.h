#pragma once

#include <wx/init.h>
#include <wx/translation.h>

#include <memory>
#include <string>

namespace qrv_test {

/// A host that speaks a language for the length of a test, with the catalogues that the build made.
class Host {
public:
    explicit Host(const std::string& language) {
        wxFileTranslationsLoader::AddCatalogLookupPathPrefix(QRV_CATALOGUE_FOLDER);
        auto translations = std::make_unique<wxTranslations>();
        translations->SetLanguage(wxString(language));
        isLoaded_ = translations->AddCatalog("qrv") && translations->IsLoaded("qrv");
        wxTranslations::Set(translations.release());
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host() { wxTranslations::Set(nullptr); }

    bool isLoaded() const { return isLoaded_; }

private:
    wxInitializer initializer_;
    bool isLoaded_ = false;
};

}  // namespace qrv_test
