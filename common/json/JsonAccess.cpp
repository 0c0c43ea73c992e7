#include <common/json/JsonAccess.h>
#include <common/json/JsonParseError.h>

namespace common {

using jsonlib::json::Array;
using jsonlib::json::Object;
using jsonlib::json::Value;
using jsonlib::json::Value_type;

namespace {

[[noreturn]] void throwParseError(OdString message, const OdString& context, const OdString& key) {
    if (!context.isEmpty())
        message += OdString::format(L"\nContext:\t%ls", context);
    if (!key.isEmpty())
        message += OdString::format(L"\njson key:\t\"%ls\"", key);
    throw JsonParseError(message);
}

const Value& getChecked(const Object& object, const OdString& key, const OdString& context,
                        Value_type expected) {
    const Value& value = getValue(object, key, context);
    checkType(value, expected, context, key);
    return value;
}

}  // namespace

const Value& getValue(const Object& object, const OdString& key, const OdString& context) {
    const auto member = object.find(key.toWide());
    if (member == object.end())
        throwParseError(OdString::format(L"Unable to find json key '%ls'", key), context, key);
    return member->second;
}

const Object& getObjectValue(const Object& object, const OdString& key, const OdString& context) {
    return getChecked(object, key, context, Value_type::object).getObject();
}

const Array& getArrayValue(const Object& object, const OdString& key, const OdString& context) {
    return getChecked(object, key, context, Value_type::array).getArray();
}

OdString getStringValue(const Object& object, const OdString& key, const OdString& context) {
    return getChecked(object, key, context, Value_type::string).getString();
}

OdString getStringValue(const Value& value) {
    checkType(value, Value_type::string, OdString(), OdString());
    return value.getString();
}

int getIntValue(const Object& object, const OdString& key, const OdString& context) {
    return getChecked(object, key, context, Value_type::integer).getInt();
}

std::int64_t getInt64Value(const Object& object, const OdString& key, const OdString& context) {
    return getChecked(object, key, context, Value_type::integer).getInt64();
}

std::uint64_t getUInt64Value(const Object& object, const OdString& key, const OdString& context) {
    return getChecked(object, key, context, Value_type::integer).getUInt64();
}

bool getBoolValue(const Object& object, const OdString& key, const OdString& context) {
    return getChecked(object, key, context, Value_type::boolean).getBool();
}

double getDoubleValue(const Object& object, const OdString& key, const OdString& context) {
    return getChecked(object, key, context, Value_type::real).getReal();
}

bool hasKey(const Object& object, const OdString& key) {
    return object.contains(key.toWide());
}

void checkType(const Value& value, Value_type expected, const OdString& context,
               const OdString& key) {
    if (value.type() == expected)
        return;
    throwParseError(OdString::format(L"Error:\tExpected json type '%ls', found '%ls'",
                                     toString(expected), toString(value.type())),
                    context, key);
}

ErrorMessage composeMessage(const Value& value, Value_type expected, const OdString& context) {
    return {OdString::format(L"Encounterd '%ls', found '%ls. While %ls'", toString(expected),
                             toString(value.type()), context),
            0};
}

OdString toString(Value_type type) {
    switch (type) {
        case Value_type::object:
            return L"object";
        case Value_type::array:
            return L"array";
        case Value_type::string:
            return L"string";
        case Value_type::boolean:
            return L"bool";
        case Value_type::integer:
            return L"int";
        case Value_type::real:
            return L"real";
        case Value_type::null:
            return L"null";
    }
    return L"unknown_type";
}

}  // namespace common
