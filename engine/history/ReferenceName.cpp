#include <engine/base/Digest.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/ReferenceName.h>

#include <algorithm>
#include <string>

namespace qrv {

namespace {

constexpr std::size_t longestName = 200;

bool isBlank(wchar_t unit) {
    return unit == L' ' || unit == 0xA0 || unit == 0x1680 || unit == 0x180E ||
           (unit >= 0x2000 && unit <= 0x200D) || unit == 0x202F || unit == 0x205F ||
           unit == 0x2060 || unit == 0x3000 || unit == 0xFEFF;
}

bool isDigit(wchar_t unit) {
    return unit >= L'0' && unit <= L'9';
}

bool isNumber(const std::wstring& name) {
    const auto digits = name.begin() + (name.front() == L'#' ? 1 : 0);
    return std::all_of(digits, name.end(), isDigit);
}

bool looksLikeHash(const OdString& name) {
    return isDigest(OdString(name).makeLower());
}

/// Why it is no name, or nothing.
const wchar_t* refusalOf(const OdString& name) {
    const std::wstring& units = name.toWide();
    if (units.empty())
        return translatable(L"it is empty");
    if (units.size() > longestName)
        return translatable(L"it is longer than 200 characters");
    if (std::any_of(units.begin(), units.end(), isBlank))
        return translatable(L"it has a blank in it");
    if (!isHarmless(name))
        return translatable(L"it has a character in it that cannot be shown");
    if (units.front() == L'-')
        return translatable(L"it begins like an option");
    if (isNumber(units))
        return translatable(L"it could be the number of a commit");
    if (looksLikeHash(name))
        return translatable(L"it could be the hash of a commit");
    if (units.find(L"..") != std::wstring::npos)
        return translatable(L"it has two dots in a row");
    if (name.iCompare(L"HEAD") == 0)
        return translatable(L"it stands for the current commit");
    return nullptr;
}

}  // namespace

Expected<OdString> checkedReferenceName(const OdString& name) {
    const wchar_t* const refusal = refusalOf(name);
    if (refusal == nullptr)
        return name;
    return ErrorMessage{OdString::format(tr(L"'%ls' cannot be the name of a branch or tag: %ls"),
                                         printable(name), tr(refusal))};
}

}  // namespace qrv
