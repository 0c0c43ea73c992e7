#pragma once

#include <common/base/ErrorMessage.h>
#include <common/base/Export.h>
#include <common/json/Value.h>
#include <platform/kernel/OdString.h>

#include <cstdint>

/// Typed access to the members of a JSON object. A missing member or one of the wrong type throws
/// `JsonParseError`, whose text has up to three lines: what is wrong, the context (what was being
/// read) and the key; an empty context or key leaves its line out. None of the texts is translated.
namespace common {

/// The member's value, of any type. The reference lives as long as the object's member.
QRV_COMMON_EXPORT const jsonlib::json::Value& getValue(const jsonlib::json::Object& object,
                                                       const OdString& key,
                                                       const OdString& context);

/// The member as an object; the reference lives as long as the member.
QRV_COMMON_EXPORT const jsonlib::json::Object& getObjectValue(const jsonlib::json::Object& object,
                                                              const OdString& key,
                                                              const OdString& context);
/// The member as an array; the reference lives as long as the member.
QRV_COMMON_EXPORT const jsonlib::json::Array& getArrayValue(const jsonlib::json::Object& object,
                                                            const OdString& key,
                                                            const OdString& context);
/// The member as a text.
QRV_COMMON_EXPORT OdString getStringValue(const jsonlib::json::Object& object, const OdString& key,
                                          const OdString& context);
/// The value itself as a string; its error text is the first line only.
QRV_COMMON_EXPORT OdString getStringValue(const jsonlib::json::Value& value);
/// The low 32 bits of the integer, without a range check.
QRV_COMMON_EXPORT int getIntValue(const jsonlib::json::Object& object, const OdString& key,
                                  const OdString& context);
/// The member as an integer. One that was read as unsigned gives the same 64 bits.
QRV_COMMON_EXPORT std::int64_t getInt64Value(const jsonlib::json::Object& object,
                                             const OdString& key, const OdString& context);
/// The integer's 64 bits, read as unsigned: -1 gives 18446744073709551615.
QRV_COMMON_EXPORT std::uint64_t getUInt64Value(const jsonlib::json::Object& object,
                                               const OdString& key, const OdString& context);
/// The member as a boolean.
QRV_COMMON_EXPORT bool getBoolValue(const jsonlib::json::Object& object, const OdString& key,
                                    const OdString& context);
/// Only of a real: a member written as a whole number is of the wrong type.
QRV_COMMON_EXPORT double getDoubleValue(const jsonlib::json::Object& object, const OdString& key,
                                        const OdString& context);

/// Whether the object has the member, in exactly this spelling.
QRV_COMMON_EXPORT bool hasKey(const jsonlib::json::Object& object, const OdString& key);

/// Throws `JsonParseError` when the value is not of the expected type.
QRV_COMMON_EXPORT void checkType(const jsonlib::json::Value& value,
                                 jsonlib::json::Value_type expected, const OdString& context,
                                 const OdString& key);

/// The error for an element of the wrong type, for callers that return errors instead of throwing.
QRV_COMMON_EXPORT ErrorMessage composeMessage(const jsonlib::json::Value& value,
                                              jsonlib::json::Value_type expected,
                                              const OdString& context);

/// "object", "array", "string", "bool", "int", "real", "null"; "unknown_type" for any other number.
QRV_COMMON_EXPORT OdString toString(jsonlib::json::Value_type type);

}  // namespace common
