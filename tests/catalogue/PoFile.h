#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace qrv_test {

/// One message of a catalogue's source file: both texts in UTF-8, the translation empty where there
/// is none.
struct PoEntry {
    std::string source;
    std::string translation;
};

/// The messages of a .po or .pot file in their order, without the header. Reads the files in the
/// form in which the tools of gettext write them; throws when the file cannot be read or has
/// another form. Independent of the compiler of catalogues, whose work it checks.
std::vector<PoEntry> readPoFile(const std::filesystem::path& file);

}  // namespace qrv_test
