#pragma once

#include <platform/kernel/OdString.h>

#include <optional>
#include <string>
#include <string_view>

namespace qrv {

// A storage URL in about half the bytes, for tables of very many of them: nothing for the empty
// text; otherwise a byte that says which form it has, the 32 bytes of the digest, and what names
// the drawing store. docs/formats/history-database.md shows the bytes.

/// The packed form of a URL that `isCheckedUrl` takes, or of the empty text. Of any other text its
/// UTF-8, which `unpackedUrl` refuses.
std::string packedUrl(const OdString& url);

/// The URL that has this packed form; nothing for bytes that `packedUrl` makes of none.
std::optional<OdString> unpackedUrl(std::string_view bytes);

}  // namespace qrv
