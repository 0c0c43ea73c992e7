#pragma once

#include <platform/kernel/OdString.h>

#include <string>

namespace qrv {

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

}  // namespace qrv
