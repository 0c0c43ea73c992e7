#pragma once

#include <cstddef>
#include <string_view>

namespace common {

/// At most as many states as this has the machine that the expression library makes of an
/// ECMAScript expression, right or wrong; repetitions are counted as often as they repeat.
/// 1,000,000,000 stands for all larger numbers.
std::size_t expressionSize(std::string_view expression);

}  // namespace common
