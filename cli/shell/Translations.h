#pragma once

#include <memory>

class wxInitializer;

namespace qrv::cli {

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

}  // namespace qrv::cli
