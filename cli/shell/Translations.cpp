#include <cli/shell/CompiledCatalogue.h>
#include <cli/shell/Translations.h>

#include <wx/arrstr.h>
#include <wx/init.h>
#include <wx/log.h>
#include <wx/string.h>
#include <wx/translation.h>

#include <QByteArray>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace fs = std::filesystem;

namespace {

constexpr const char* domain = "qrv";

struct Catalogue {
    std::string language;
    std::string bytes;
};

/// Hands wxWidgets one catalogue that was found and checked before. Its own loader would also look
/// into folders that the environment names, and would trust the file.
class SingleLoader : public wxTranslationsLoader {
public:
    explicit SingleLoader(Catalogue catalogue) : catalogue_(std::move(catalogue)) {}

    wxMsgCatalog* LoadCatalog(const wxString& name, const wxString& language) override {
        if (name != domain || language != catalogue_.language)
            return nullptr;
        return wxMsgCatalog::CreateFromData(
            wxScopedCharBuffer::CreateNonOwned(catalogue_.bytes.data(), catalogue_.bytes.size()),
            name);
    }
    wxArrayString GetAvailableTranslations(const wxString&) const override {
        wxArrayString languages;
        languages.Add(catalogue_.language);
        return languages;
    }

private:
    Catalogue catalogue_;
};

std::string fromEnvironment(const char* name) {
    return qgetenv(name).toStdString();
}

/// A locale's name without encoding and variant: "de_DE" of "de_DE.UTF-8@euro". Empty when it is no
/// plain name, so that no environment leads into another folder.
std::string languageOf(const std::string& locale) {
    const std::string name = locale.substr(0, locale.find_first_of(".@"));
    const bool isPlain = std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    });
    return isPlain ? name : std::string();
}

std::string withoutCountry(const std::string& language) {
    return language.substr(0, language.find('_'));
}

bool isUntranslated(const std::string& language) {
    return language.empty() || language == "C" || language == "POSIX";
}

std::string userLocale() {
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (std::string locale = fromEnvironment(name); !locale.empty())
            return locale;
    }
    return {};
}

/// The languages to look for, best first. English ends the list: it is what the sources speak.
std::vector<std::string> wantedLanguages() {
    const std::string locale = userLocale();
    if (isUntranslated(languageOf(locale)))
        return {};
    const std::string list = fromEnvironment("LANGUAGE");
    std::istringstream names(list.empty() ? locale : list);
    std::vector<std::string> wanted;
    for (std::string name; std::getline(names, name, ':');) {
        const std::string language = languageOf(name);
        const std::string general = withoutCountry(language);
        if (general == "en" || general == "C" || general == "POSIX")
            break;
        if (!language.empty())
            wanted.insert(wanted.end(), {language, general});
    }
    return wanted;
}

/// The folders of catalogues, beside the program wherever it stands: as installed, and as built.
/// Absolute, so that the current folder never gives one. Empty when the system does not tell where
/// the program is.
std::vector<fs::path> catalogueFolders() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error || !program.is_absolute())
        return {};
    return {program.parent_path() / QRV_LOCALE_FROM_PROGRAM, program.parent_path() / "../locale"};
}

/// The bytes of a compiled catalogue. None when there is no such file or it is damaged.
std::optional<std::string> readCatalogue(const fs::path& file) {
    constexpr std::uintmax_t largestSize = 16U << 20U;
    std::error_code error;
    // Only a regular file has a size: a pipe, whose opening would wait for its writer, stays shut.
    const std::uintmax_t size = fs::file_size(file, error);
    if (error || size > largestSize)
        return std::nullopt;
    std::string bytes(size, '\0');
    std::ifstream stream(file, std::ios::binary);
    if (!stream.read(bytes.data(), static_cast<std::streamsize>(size)) ||
        !isCompiledCatalogue(bytes))
        return std::nullopt;
    return bytes;
}

std::optional<Catalogue> findCatalogue() {
    const std::vector<std::string> languages = wantedLanguages();
    if (languages.empty())
        return std::nullopt;
    const std::vector<fs::path> folders = catalogueFolders();
    for (const std::string& language : languages) {
        for (const fs::path& folder : folders) {
            if (auto bytes = readCatalogue(folder / language / "LC_MESSAGES/qrv.mo"))
                return Catalogue{language, std::move(*bytes)};
        }
    }
    return std::nullopt;
}

}  // namespace

Translations::Translations() {
    std::optional<Catalogue> catalogue = findCatalogue();
    if (!catalogue)
        return;
    host_ = std::make_unique<wxInitializer>();
    // What wxWidgets has to say about a catalogue is no concern of the user's.
    const wxLogNull silence;
    auto translations = std::make_unique<wxTranslations>();
    translations->SetLanguage(catalogue->language);
    // wxWidgets owns the loader, and the translations in the end.
    translations->SetLoader(new SingleLoader(std::move(*catalogue)));
    if (translations->AddCatalog(domain) && translations->IsLoaded(domain))
        wxTranslations::Set(translations.release());
}

Translations::~Translations() {
    if (host_)
        wxTranslations::Set(nullptr);
}

}  // namespace qrv::cli
