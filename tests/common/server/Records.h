#pragma once

#include <common/base/Expected.h>
#include <common/json/JsonParseError.h>
#include <common/json/Reader.h>
#include <common/json/Value.h>
#include <tests/support/Files.h>

#include <stdexcept>
#include <string>

namespace qrv_test {

/// The JSON value that a text is. Throws when it is none.
inline jsonlib::json::Value parsed(const std::string& textUtf8) {
    const OdString text = OdString::fromNarrow(textUtf8);
    jsonlib::json::Value value;
    if (!jsonlib::json::read(text.c_str(), text.c_str() + text.getLength(), value))
        throw std::runtime_error("no JSON: " + textUtf8);
    return value;
}

inline jsonlib::json::Object object(const std::string& text) {
    return parsed(text).getObject();
}

inline jsonlib::json::Array array(const std::string& text) {
    return parsed(text).getArray();
}

/// How a reader takes its record, in one text: "a value", or which error it returns or throws.
template <class Call>
std::string outcomeOf(Call call) {
    try {
        const auto result = call();
        if (result.hasValue())
            return "a value";
        const std::string code =
            result.error().code == 0 ? "" : " " + std::to_string(result.error().code);
        return "error" + code + ": " + result.error().message.toNarrow();
    } catch (const common::JsonParseError& error) {
        return "throws: " + error.description().toNarrow();
    }
}

/// The outcome for a value of the wrong kind; with a key when it is a member that has it.
inline std::string wrongKind(const std::string& expected, const std::string& found,
                             const std::string& key = "") {
    const std::string line =
        "throws: Error:\tExpected json type '" + expected + "', found '" + found + "'";
    return key.empty() ? line : line + "\njson key:\t\"" + key + "\"";
}

inline std::string missing(const std::string& record, const std::string& key) {
    return "error: Could not parse " + record + ", missing \"" + key + "\"";
}

/// The outcome for an element of a list that is no object.
inline std::string notAnObject(const std::string& found) {
    return "error: Encounterd 'object', found '" + found + ". While parsing json vector.'";
}

/// A JSON text of each kind.
struct Kind {
    const char* name;
    const char* text;
};
inline constexpr Kind kinds[] = {
    {"object", R"({"a":1})"}, {"array", "[[],{}]"}, {"string", R"("text")"},
    {"bool", "true"},         {"int", "-7"},        {"real", "1.5"},
    {"null", "null"},
};

/// The bytes of a record that is kept beside the tests.
inline std::string recordSample(const std::string& name) {
    return readFile(std::string(QRV_RECORD_SAMPLES) + "/" + name + ".sample");
}

}  // namespace qrv_test
