// A text that the JSON reader accepts is written, reads back, and from then on stays the same.

#include <common/json/Reader.h>
#include <common/json/Writer.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace json = jsonlib::json;

static bool readText(const std::wstring& text, json::Value& value) try {
    return json::read(text.data(), text.data() + text.size(), value);
} catch (const std::length_error&) {
    return false;  // The answer to a string without an end.
}

static void require(bool holds) {
    if (!holds)
        std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string narrow(reinterpret_cast<const char*>(bytes), size);
    json::Value value, again, third;
    if (!readText(OdString::fromNarrow(narrow).toWide(), value))
        return 0;
    const json::Value copy = value;
    const std::wstring text = json::write(value);
    require(json::write(copy) == text);
    if (!readText(text, again)) {
        require(text.find(L"inf") != std::wstring::npos);  // An infinite real cannot be read back.
        return 0;
    }
    // Small reals lose digits in the first writing, and only there.
    require(json::write(again) == text && readText(text, third) && third == again);
    return 0;
}
