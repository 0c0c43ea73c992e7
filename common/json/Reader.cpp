#include <common/json/Reader.h>
#include <common/json/TokenScannerInternal.h>

#include <string>
#include <utility>
#include <vector>

namespace jsonlib::json {

namespace {

using detail::TokenScanner;

/// Reads one value. The containers that are still open are kept on a stack of their own, so that
/// depth costs memory but never the program's stack; each value is made in the place where it
/// stays.
class Parser {
public:
    Parser(const wchar_t* begin, const wchar_t* end) : tokens_(begin, end) {}

    /// Throws `TokenScanner::Error` for a syntax error and `std::length_error` for a string without
    /// an end, also where no string may stand.
    Value parse() {
        Value root;
        parseValue(root);
        while (!open_.empty()) {
            Value& container = *open_.back();
            Value* place = container.type() == Value_type::object
                               ? nextMember(container.getObject())
                               : nextElement(container.getArray());
            if (place != nullptr)
                parseValue(*place);
            else
                open_.pop_back();
        }
        return root;
    }

private:
    void parseValue(Value& place);
    Value* nextElement(Array& array);
    Value* nextMember(Object& object);
    bool closes(wchar_t bracket, bool isFirst);

    TokenScanner tokens_;
    std::vector<Value*> open_;
};

void Parser::parseValue(Value& place) {
    const wchar_t first = tokens_.peekToken();
    switch (first) {
        case L'{':
            tokens_.skip();
            place = Object();
            open_.push_back(&place);
            break;
        case L'[':
            tokens_.skip();
            place = Array();
            open_.push_back(&place);
            break;
        case L'"':
            place = tokens_.string();
            break;
        case L't':
            tokens_.expect(L"true");
            place = true;
            break;
        case L'f':
            tokens_.expect(L"false");
            place = false;
            break;
        case L'n':
            tokens_.expect(L"null");
            place = Value();
            break;
        default:
            place = tokens_.number();
    }
}

/// The place of the array's next element, or null when the array ends here.
Value* Parser::nextElement(Array& array) {
    return closes(L']', array.empty()) ? nullptr : &array.emplace_back();
}

/// The place of the object's next member, or null when the object ends here. An earlier member of
/// the same key is replaced.
Value* Parser::nextMember(Object& object) {
    if (closes(L'}', object.empty()))
        return nullptr;
    if (tokens_.peek() != L'"')
        throw TokenScanner::Error();
    std::wstring key = tokens_.string();
    if (tokens_.peekToken() != L':')
        tokens_.refuse();
    tokens_.skip();
    // Our own files have their keys in order, so the end is the likely place.
    return &object.try_emplace(object.end(), std::move(key))->second;
}

/// Takes the comma between two values, and the closing bracket if it is there. A comma may also
/// stand before the bracket, but not alone.
bool Parser::closes(wchar_t bracket, bool isFirst) {
    if (!isFirst && tokens_.peekToken() != bracket) {
        if (tokens_.peek() != L',')
            tokens_.refuse();
        tokens_.skip();
    }
    if (tokens_.peekToken() != bracket)
        return false;
    tokens_.skip();
    return true;
}

}  // namespace

bool read(const wchar_t* begin, const wchar_t* end, Value& value) {
    try {
        value = Parser(begin, end).parse();
        return true;
    } catch (const TokenScanner::Error&) {
        return false;
    }
}

}  // namespace jsonlib::json
