#include <common/base/MessageInternal.h>
#include <common/json/JsonAccess.h>
#include <common/json/ParseObjectInternal.h>
#include <common/json/Reader.h>
#include <platform/kernel/OdError.h>

namespace common {

using jsonlib::json::Object;
using jsonlib::json::Value;
using jsonlib::json::Value_type;

Object parseObject(const OdString& text) {
    Value value;
    if (!jsonlib::json::read(text.c_str(), text.c_str() + text.getLength(), value))
        throw OdError(translate(L"Unable to parse json, please check if syntax is valid"));
    checkType(value, Value_type::object, OdString(), OdString());
    return std::move(value.getObject());
}

}  // namespace common
