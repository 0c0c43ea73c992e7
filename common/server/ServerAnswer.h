#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/json/Value.h>
#include <platform/kernel/OdString.h>

namespace common {

/// The identifier that the server gave to a newly initialised repository. An absent "id" is an
/// error; one that is no text throws `JsonParseError`.
QRV_COMMON_EXPORT Expected<OdString> deserializeInitData(const jsonlib::json::Object& record);

/// The server's command version, as it stands. An absent "commandVersion" is an error; one that is
/// no text, and a text that is no JSON object, throw `JsonParseError`; a text cut off inside a
/// string throws `std::length_error`.
QRV_COMMON_EXPORT Expected<OdString> deserializeServerVersion(const OdString& text);

}  // namespace common
