#include <common/json/JsonParseError.h>

namespace common {

JsonParseError::JsonParseError(const OdString& message) : OdError(message) {
}
JsonParseError::JsonParseError(const JsonParseError& other) = default;
JsonParseError::JsonParseError(JsonParseError&& other) noexcept = default;
JsonParseError& JsonParseError::operator=(const JsonParseError& other) = default;
JsonParseError& JsonParseError::operator=(JsonParseError&& other) noexcept = default;
JsonParseError::~JsonParseError() = default;

}  // namespace common
