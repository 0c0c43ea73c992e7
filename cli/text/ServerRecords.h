#pragma once

#include <common/base/Expected.h>
#include <common/json/Value.h>
#include <platform/kernel/OdString.h>

#include <span>

namespace qrv::cli {

/// A record that the server sends, by the reader that the library has for it.
struct RecordKind {
    const char* name;
    /// Reads the record's text and gives what the library took from it, under the keys that it has
    /// in the record. A date has two forms: "date" in universal time for a person, and "dateMs",
    /// its milliseconds since 1970, from which nothing is missing.
    ///
    /// Fails, and throws `JsonParseError` and `std::length_error`, as the reader does.
    Expected<jsonlib::json::Value> (*read)(const OdString& text);
};

/// One for each reader, in the order of what they read: small answers, repositories, references,
/// commits.
std::span<const RecordKind> recordKinds();

}  // namespace qrv::cli
