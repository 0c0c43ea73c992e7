#pragma once

#include <platform/kernel/OdString.h>

#include <memory>
#include <string>

class wxInitializer;

namespace qrv_cli {

/// The user's language, for as long as it lives: the message catalogue that `tr` and the library
/// ask. The environment names the language, in the way of the gettext programs (LC_ALL,
/// LC_MESSAGES, LANG, and LANGUAGE for a list). Without a catalogue for it, or with a damaged one,
/// the texts stay as they stand in the sources; nothing is told. The process's locale stays as it
/// is, so that numbers and times keep their form.
class Translations {
public:
    Translations();
    Translations(const Translations&) = delete;
    Translations& operator=(const Translations&) = delete;
    ~Translations();

private:
    /// Null where no catalogue is wanted, which costs nothing.
    std::unique_ptr<wxInitializer> host_;
};

/// The text for `source` in the catalogue, or `source` itself. Placeholders are still in it: the
/// look-up comes first, the filling after.
OdString tr(const wchar_t* source);

/// The same as UTF-8, for the parser of the arguments.
std::string trUtf8(const wchar_t* source);

/// Marks a text that stands in a table, so that it comes into the catalogue; it is looked up, by
/// `tr` or `trUtf8`, where it is used.
constexpr const wchar_t* translatable(const wchar_t* source) {
    return source;
}

}  // namespace qrv_cli
