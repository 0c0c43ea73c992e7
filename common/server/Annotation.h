#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/json/Value.h>
#include <platform/kernel/OdString.h>
#include <platform/kernel/OdTimeStamp.h>

namespace common {

/// Who made a commit, when, and what they said of it.
struct Annotation {
    OdString author;   ///< as the server has it, often an address
    OdString message;  ///< empty when the record has none
    OdTimeStamp date;  ///< in universal time
};

/// The three texts under "author", "date" and "message". The date is written as the text that is
/// given.
QRV_COMMON_EXPORT jsonlib::json::Object serializeAnnotation(const OdString& author,
                                                            const OdString& date,
                                                            const OdString& message);

/// Reads an annotation. Unlike in the outgoing form, "date" is a JSON real there: milliseconds
/// since 1970, cut toward zero to a whole number. "message" may be absent. An absent "author" or
/// "date" is an error that names the key; a member of the wrong kind throws `JsonParseError`.
QRV_COMMON_EXPORT Expected<Annotation> deserializeAnnotation(jsonlib::json::Object record);

}  // namespace common
