#pragma once

#include <wx/arrstr.h>
#include <wx/init.h>
#include <wx/translation.h>

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>

// For test programs that link qrv_wx_base.
namespace qrv_test {

/// Translations by their source texts, both in UTF-8.
using Texts = std::map<std::string, std::string>;

inline void append32(std::string& bytes, std::size_t number) {
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>((number >> shift) & 0xFF);
}

/// The bytes of a compiled catalogue: a header, a table of lengths and positions for the sources,
/// one for the translations, then the texts, each with a NUL behind it.
inline std::string compiledCatalogue(Texts texts) {
    texts[""] = "Content-Type: text/plain; charset=UTF-8\n";
    constexpr std::size_t headerSize = 28;
    const std::size_t tableSize = 8 * texts.size();
    std::string bytes;
    append32(bytes, 0x950412DE);
    append32(bytes, 0);
    append32(bytes, texts.size());
    append32(bytes, headerSize);
    append32(bytes, headerSize + tableSize);
    append32(bytes, 0);
    append32(bytes, headerSize + 2 * tableSize);

    std::string pool;
    const auto addEntry = [&](const std::string& text) {
        append32(bytes, text.size());
        append32(bytes, headerSize + 2 * tableSize + pool.size());
        pool += text + '\0';
    };
    for (const auto& [source, translation] : texts)
        addEntry(source);
    for (const auto& [source, translation] : texts)
        addEntry(translation);
    return bytes + pool;
}

/// Gives one catalogue from memory, for German.
class MemoryLoader : public wxTranslationsLoader {
public:
    explicit MemoryLoader(const Texts& texts) : MemoryLoader(compiledCatalogue(texts)) {}
    explicit MemoryLoader(std::string bytes) : bytes_(std::move(bytes)) {}

    wxMsgCatalog* LoadCatalog(const wxString& domain, const wxString&) override {
        return wxMsgCatalog::CreateFromData(
            wxScopedCharBuffer::CreateNonOwned(bytes_.data(), bytes_.size()), domain);
    }
    wxArrayString GetAvailableTranslations(const wxString&) const override {
        wxArrayString languages;
        languages.Add("de");
        return languages;
    }

private:
    std::string bytes_;
};

/// A host that speaks German for the length of a test.
class GermanHost {
public:
    explicit GermanHost(const Texts& texts) {
        auto translations = std::make_unique<wxTranslations>();
        translations->SetLoader(new MemoryLoader(texts));
        translations->SetLanguage(wxString("de"));
        isLoaded_ = translations->AddCatalog("host") && translations->IsLoaded("host");
        wxTranslations::Set(translations.release());
    }
    GermanHost(const GermanHost&) = delete;
    GermanHost& operator=(const GermanHost&) = delete;
    ~GermanHost() { wxTranslations::Set(nullptr); }

    bool isLoaded() const { return isLoaded_; }

private:
    wxInitializer initializer_;
    bool isLoaded_ = false;
};

}  // namespace qrv_test
