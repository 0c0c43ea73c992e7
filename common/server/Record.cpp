#include <common/base/MessageInternal.h>
#include <common/json/Reader.h>
#include <common/server/RecordInternal.h>

namespace common {

using jsonlib::json::Array;
using jsonlib::json::Object;
using jsonlib::json::Value;
using jsonlib::json::Value_type;

namespace {

Value readText(const OdString& text, Value_type expected) {
    Value value;
    // A text that is no JSON leaves null, and the check of the kind reports it as such.
    static_cast<void>(jsonlib::json::read(text.c_str(), text.c_str() + text.getLength(), value));
    checkType(value, expected, OdString(), OdString());
    return value;
}

}  // namespace

Object readObject(const OdString& text) {
    return std::move(readText(text, Value_type::object).getObject());
}

Array readArray(const OdString& text) {
    return std::move(readText(text, Value_type::array).getArray());
}

ErrorMessage missingKey(const OdString& record, const OdString& key) {
    return translatedError(L"Could not parse %ls, missing \"%ls\"", record, key);
}

ErrorMessage notAnObject(const Value& element) {
    return composeMessage(element, Value_type::object, L"parsing json vector.");
}

}  // namespace common
