#pragma once

#include <common/json/Value.h>

#include <random>

namespace qrv_test {

/// A random value of up to the given number of levels, with texts of all units, integers of all
/// sizes and reals that survive the writer's sixteen digits.
jsonlib::json::Value randomValue(std::mt19937_64& random, int levels);

}  // namespace qrv_test
