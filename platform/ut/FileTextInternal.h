#pragma once

#include <platform/kernel/OdString.h>

#include <string_view>

namespace ut {

/// The text of `bytes`: UTF-16 behind its byte-order mark, else UTF-8, whose mark is left out. A
/// last byte that is half a unit of UTF-16 becomes U+FFFD. Throws `std::length_error` when a text
/// cannot be so long.
OdString decodeText(std::string_view bytes);

/// The whole text of a file, or the cause why it cannot be read: a number of <cerrno> or
/// `notARegularFile`.
struct FileText {
    OdString text;
    int errorNumber = 0;
};
FileText readFileText(const OdString& path);

}  // namespace ut
