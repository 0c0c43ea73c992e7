#include <common/json/Writer.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>

namespace jsonlib::json {

namespace {

bool isPlainAscii(wchar_t unit) {
    return unit >= L' ' && unit <= L'~' && unit != L'"' && unit != L'\\';
}

/// What is written as it stands. A fixed choice, where the C library's would change with the
/// locale. Surrogates are escaped also in pairs, since one unit is judged at a time.
bool isPrintable(wchar_t unit) {
    const auto code = static_cast<char32_t>(unit);
    if (code < 0xA0)
        return isPlainAscii(unit);
    const bool isSurrogateOrPrivate = code >= 0xD800 && code <= 0xF8FF;
    const bool isSeparator = code == 0x2028 || code == 0x2029;
    const bool isNoncharacter = (code >= 0xFDD0 && code <= 0xFDEF) || code >= 0xFFFE;
    return !isSurrogateOrPrivate && !isSeparator && !isNoncharacter;
}

const wchar_t* endOfPrintableRun(const wchar_t* begin, const wchar_t* end) {
    // Whole blocks without a branch for each character are what compilers turn into vector code.
    constexpr std::ptrdiff_t block = 16;
    while (end - begin >= block) {
        bool isPlain = true;
        for (std::ptrdiff_t index = 0; index < block; ++index)
            isPlain &= isPlainAscii(begin[index]);
        if (!isPlain)
            break;
        begin += block;
    }
    while (begin != end && isPrintable(*begin))
        ++begin;
    return begin;
}

/// A document on its way into a text. The containers that are still open stand on a stack of their
/// own, so that depth never costs the program's stack.
class Document {
public:
    std::wstring take(const Value& root) {
        writeValue(root);
        while (!open_.empty())
            writeNext();
        return std::move(text_);
    }

private:
    struct Container {
        const Value* value;
        Object::const_iterator member;
        std::size_t start = 0;
        std::size_t index = 0;
    };

    void writeValue(const Value& value);
    void open(const Value& container);
    void writeNext();
    void writeNextMember(Container& container);
    void writeNextElement(Container& container);
    void makeRoom(const Container& array, std::size_t count);
    void close(wchar_t bracket, bool isEmpty);
    void writeIndent() { text_.append(open_.size() * 4, L' '); }

    void writeString(const std::wstring& string);
    void writeSpecial(wchar_t character);
    void writeEscape(std::uint32_t unit);
    void writeInteger(const Value& value);
    void writeReal(double real);
    void writeAscii(std::string_view ascii);

    std::wstring text_;
    std::vector<Container> open_;
};

void Document::writeValue(const Value& value) {
    switch (value.type()) {
        case Value_type::object:
        case Value_type::array:
            open(value);
            break;
        case Value_type::string:
            writeString(value.getString());
            break;
        case Value_type::boolean:
            writeAscii(value.getBool() ? "true" : "false");
            break;
        case Value_type::integer:
            writeInteger(value);
            break;
        case Value_type::real:
            writeReal(value.getReal());
            break;
        case Value_type::null:
            writeAscii("null");
            break;
    }
}

void Document::open(const Value& container) {
    const bool isObject = container.type() == Value_type::object;
    text_ += isObject ? L'{' : L'[';
    text_ += L'\n';
    const auto firstMember = isObject ? container.getObject().begin() : Object::const_iterator();
    open_.push_back({&container, firstMember, text_.size()});
}

/// Writes the next member or element of the innermost container, or its end.
void Document::writeNext() {
    Container& container = open_.back();
    if (container.value->type() == Value_type::object)
        writeNextMember(container);
    else
        writeNextElement(container);
}

void Document::writeNextMember(Container& container) {
    const Object& object = container.value->getObject();
    if (container.member == object.end()) {
        close(L'}', object.empty());
        return;
    }
    if (container.member != object.begin())
        text_.append(L",\n", 2);
    const auto& [key, value] = *container.member++;
    writeIndent();
    writeString(key);
    text_.append(L" : ", 3);
    writeValue(value);
}

void Document::writeNextElement(Container& container) {
    const Array& array = container.value->getArray();
    if (container.index == array.size()) {
        close(L']', array.empty());
        return;
    }
    if (container.index != 0)
        text_.append(L",\n", 2);
    makeRoom(container, array.size());
    writeIndent();
    writeValue(array[container.index++]);
}

/// Before the text runs out of room inside an array, makes it as large as the array's end should
/// need, going by the elements written so far. Growing blindly would touch three times the memory,
/// which costs more than the writing. Elements that mislead lead to no more than eight times the
/// text.
void Document::makeRoom(const Container& array, std::size_t count) {
    if (array.index == 0)
        return;
    const std::size_t perElement = (text_.size() - array.start) / array.index + 1;
    if (text_.capacity() - text_.size() >= 2 * perElement)
        return;
    const std::size_t elementLimit = 7 * text_.size() / perElement;
    const std::size_t elements = std::min(count - array.index, elementLimit);
    text_.reserve(text_.size() + perElement * elements + text_.size() / 64);
}

void Document::close(wchar_t bracket, bool isEmpty) {
    if (!isEmpty)
        text_ += L'\n';
    open_.pop_back();
    writeIndent();
    text_ += bracket;
}

void Document::writeString(const std::wstring& string) {
    text_ += L'"';
    const wchar_t* const end = string.data() + string.size();
    for (const wchar_t* run = string.data(); run != end;) {
        const wchar_t* special = endOfPrintableRun(run, end);
        text_.append(run, special);
        if (special != end)
            writeSpecial(*special++);
        run = special;
    }
    text_ += L'"';
}

/// Writes a character that cannot stand in a string as it is.
void Document::writeSpecial(wchar_t character) {
    switch (character) {
        case L'"':
            return writeAscii("\\\"");
        case L'\\':
            return writeAscii("\\\\");
        case L'\b':
            return writeAscii("\\b");
        case L'\f':
            return writeAscii("\\f");
        case L'\n':
            return writeAscii("\\n");
        case L'\r':
            return writeAscii("\\r");
        case L'\t':
            return writeAscii("\\t");
        default:
            break;
    }
    const auto code = static_cast<char32_t>(character);
    if (code > 0x10FFFF) {
        writeEscape(0xFFFD);
    } else if (code > 0xFFFF) {
        writeEscape(0xD7C0 + (code >> 10));
        writeEscape(0xDC00 + (code & 0x3FF));
    } else {
        writeEscape(code);
    }
}

void Document::writeEscape(std::uint32_t unit) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const char escape[] = {'\\',
                           'u',
                           digits[unit >> 12],
                           digits[unit >> 8 & 15],
                           digits[unit >> 4 & 15],
                           digits[unit & 15]};
    writeAscii({escape, sizeof escape});
}

void Document::writeInteger(const Value& value) {
    char digits[24];
    char* const end = digits + sizeof digits;
    const auto result = value.isUnsigned() ? std::to_chars(digits, end, value.getUInt64())
                                           : std::to_chars(digits, end, value.getInt64());
    writeAscii({digits, static_cast<std::size_t>(result.ptr - digits)});
}

void Document::writeReal(double real) {
    // The largest real has 309 digits before the point.
    char digits[352];
    const auto result =
        std::to_chars(digits, digits + sizeof digits, real, std::chars_format::fixed, 16);
    writeAscii({digits, static_cast<std::size_t>(result.ptr - digits)});
}

void Document::writeAscii(std::string_view ascii) {
    for (const char character : ascii)
        text_ += static_cast<wchar_t>(character);
}

}  // namespace

std::wstring write(const Value& value) {
    return Document().take(value);
}

}  // namespace jsonlib::json
