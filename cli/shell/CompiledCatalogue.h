#pragma once

#include <string_view>

namespace qrv::cli {

/// Whether the bytes are a compiled message catalogue (an .mo file) as our build makes them: in
/// UTF-8, in little-endian numbers, with every table and every text inside the bytes. wxWidgets
/// follows the positions in a catalogue without this question, so a damaged file would end the
/// program. What the texts say is not looked at: any text is harmless as a pattern of
/// `OdString::format`.
bool isCompiledCatalogue(std::string_view bytes);

}  // namespace qrv::cli
