#include <tests/common/json/Reference.h>

#include <algorithm>
#include <locale>
#include <map>
#include <regex>
#include <sstream>
#include <string>

namespace qrv_test {

namespace {

using namespace jsonlib::json;

struct Mistake {};
struct Endless {};

/// Recursive descent over tokens that regular expressions cut off the text.
class Reference {
public:
    explicit Reference(std::wstring_view text) : rest_(text) {}

    Value value() {
        skipBlanks();
        if (takeIf(L"{"))
            return object();
        if (takeIf(L"["))
            return array();
        if (takeIf(L"\""))
            return string();
        if (takeIf(L"true"))
            return true;
        if (takeIf(L"false"))
            return false;
        if (takeIf(L"null"))
            return Value();
        return number();
    }

private:
    void skipBlanks() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(L"\t\n\v\f\r "), rest_.size()));
    }

    bool takeIf(std::wstring_view token) {
        if (!rest_.starts_with(token))
            return false;
        rest_.remove_prefix(token.size());
        return true;
    }

    bool takeTokenIf(std::wstring_view token) {
        skipBlanks();
        return takeIf(token);
    }

    /// A token is cut off whole before it is refused, and a string may have no end.
    [[noreturn]] void refuseToken() {
        if (takeTokenIf(L"\""))
            string();
        throw Mistake();
    }

    Value object() {
        Object members;
        while (!takeTokenIf(L"}")) {
            if (!takeTokenIf(L"\""))
                throw Mistake();
            const std::wstring key = string();
            if (!takeTokenIf(L":"))
                refuseToken();
            members[key] = value();
            if (takeTokenIf(L"}"))
                break;
            if (!takeTokenIf(L","))
                refuseToken();
        }
        return members;
    }

    Value array() {
        Array elements;
        while (!takeTokenIf(L"]")) {
            elements.push_back(value());
            if (takeTokenIf(L"]"))
                break;
            if (!takeTokenIf(L","))
                refuseToken();
        }
        return elements;
    }

    std::wstring string() {
        static const std::map<wchar_t, wchar_t> escapes = {
            {L'n', L'\n'}, {L't', L'\t'}, {L'r', L'\r'},  {L'f', L'\f'},
            {L'b', L'\b'}, {L'"', L'"'},  {L'\\', L'\\'}, {L'/', L'/'}};
        std::wstring result;
        while (!takeIf(L"\"")) {
            if (rest_.empty())
                throw Endless();
            if (!takeIf(L"\\")) {
                result += rest_.front();
                rest_.remove_prefix(1);
            } else if (takeIf(L"u")) {
                result += hexadecimal();
            } else {
                if (rest_.empty() || !escapes.contains(rest_.front()))
                    throw Mistake();
                result += escapes.at(rest_.front());
                rest_.remove_prefix(1);
            }
        }
        return result;
    }

    wchar_t hexadecimal() {
        const std::wstring digits(rest_.substr(0, 4));
        if (digits.size() != 4 ||
            digits.find_first_not_of(L"0123456789abcdefABCDEF") != std::wstring::npos)
            throw Mistake();
        rest_.remove_prefix(4);
        return static_cast<wchar_t>(std::stoi(digits, nullptr, 16));
    }

    Value number() {
        static const std::wregex form(L"(-?)(0|[1-9][0-9]*)(\\.[0-9]*)?([eE]([-+]?[0-9]+)?)?");
        std::match_results<std::wstring_view::const_iterator> match;
        if (!std::regex_search(rest_.begin(), rest_.end(), match, form,
                               std::regex_constants::match_continuous))
            throw Mistake();
        if (match[4].matched && !match[5].matched)
            throw Mistake();
        const std::wstring text = match.str();
        rest_.remove_prefix(text.size());
        if (match[3].matched || match[4].matched)
            return real(text);
        if (match[1].length() == 0 || text == L"-0")
            return std::uint64_t{std::stoull(match[2].str())};
        return std::int64_t{std::stoll(text)};
    }

    /// By a stream of the classic locale, since the C library's conversions follow the process's.
    static double real(const std::wstring& text) {
        std::wistringstream stream(text);
        stream.imbue(std::locale::classic());
        double number = 0;
        stream >> number;
        return number;
    }

    std::wstring_view rest_;
};

}  // namespace

ReferenceAnswer readByReference(std::wstring_view text) {
    try {
        return {Reference(text).value()};
    } catch (const Mistake&) {
        return {};
    } catch (const Endless&) {
        return {std::nullopt, true};
    }
}

}  // namespace qrv_test
