#pragma once

#include <common/json/Reader.h>
#include <common/json/Value.h>

#include <optional>
#include <string>
#include <string_view>

namespace qrv_test {

/// The value that a text reads as, or nothing when the reader refuses it.
inline std::optional<jsonlib::json::Value> readJson(std::wstring_view text) {
    jsonlib::json::Value value;
    if (!jsonlib::json::read(text.data(), text.data() + text.size(), value))
        return std::nullopt;
    return value;
}

/// ASCII as it is, everything else as hexadecimal numbers: for failure messages.
inline std::string shown(std::wstring_view text) {
    std::string result;
    for (const wchar_t unit : text) {
        if (unit >= L' ' && unit <= L'~')
            result += static_cast<char>(unit);
        else
            result += "<" + std::to_string(static_cast<unsigned long>(unit)) + ">";
    }
    return result;
}

}  // namespace qrv_test
