#include <common/json/ValueError.h>

#include <string>

namespace jsonlib::json {

ValueError::ValueError(Value_type actual, Value_type expected)
    : std::runtime_error("value type is " + std::to_string(static_cast<int>(actual)) + " not " +
                         std::to_string(static_cast<int>(expected))) {
}

}  // namespace jsonlib::json
