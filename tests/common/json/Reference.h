#pragma once

#include <common/json/Value.h>

#include <optional>
#include <string_view>

namespace qrv_test {

/// What a text reads as by a slow and simple reader, written after the grammar without a thought
/// for depth or speed. `isEndless` says that a string had no end.
struct ReferenceAnswer {
    std::optional<jsonlib::json::Value> value;
    bool isEndless = false;
};

ReferenceAnswer readByReference(std::wstring_view text);

}  // namespace qrv_test
