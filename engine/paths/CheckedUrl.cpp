#include <engine/base/Digest.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/RelativePath.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace qrv {

namespace {

constexpr std::size_t prefixLength = 3;
constexpr std::size_t longestStore = 200;

bool isDigit(wchar_t unit) {
    return unit >= L'0' && unit <= L'9';
}

bool isStoreUnit(wchar_t unit) {
    return isDigit(unit) || (unit >= L'a' && unit <= L'z') || (unit >= L'A' && unit <= L'Z') ||
           unit == L'-' || unit == L'_';
}

bool isStore(std::wstring_view text) {
    return !text.empty() && text.size() <= longestStore &&
           std::all_of(text.begin(), text.end(), isStoreUnit) &&
           isPortable(OdString(std::wstring(text)).toNarrow());
}

/// Views into the URL, since tens of thousands of them are checked at a time.
struct Parts {
    std::wstring_view store;
    std::wstring_view digest;
};

std::optional<Parts> partsOf(std::wstring_view url) {
    if (url.size() < prefixLength + digestLength)
        return std::nullopt;
    const std::wstring_view prefix = url.substr(0, prefixLength);
    std::wstring_view middle = url.substr(prefixLength);
    const std::wstring_view digest = middle.substr(middle.size() - digestLength);
    middle.remove_suffix(digestLength);
    if (!isDigest(digest))
        return std::nullopt;
    if (prefix == L"po:" && middle.empty())
        return Parts{.store = {}, .digest = digest};
    if (prefix != L"tf:" || middle.empty() || middle.back() != L'#')
        return std::nullopt;
    middle.remove_suffix(1);
    return isStore(middle) ? std::optional(Parts{.store = middle, .digest = digest}) : std::nullopt;
}

OdString toText(std::wstring_view units) {
    return OdString(std::wstring(units));
}

}  // namespace

CheckedUrl::CheckedUrl(OdString text, OdString store, OdString digest)
    : text_(std::move(text)), store_(std::move(store)), digest_(std::move(digest)) {
}

Expected<CheckedUrl> CheckedUrl::check(const OdString& url) {
    const std::wstring& units = url.toWide();
    const std::optional<Parts> parts = partsOf(units);
    if (!parts)
        return ErrorMessage{
            OdString::format(tr(L"'%ls' does not name a stored version"), printable(url))};
    return CheckedUrl(url, toText(parts->store), toText(parts->digest));
}

bool CheckedUrl::isDrawing() const {
    return !store_.isEmpty();
}

bool isCheckedUrl(const OdString& url) {
    return partsOf(url.toWide()).has_value();
}

OdString digestOfUrl(const OdString& url) {
    const Expected<CheckedUrl> checked = CheckedUrl::check(url);
    return checked ? checked->digest() : OdString();
}

bool isStoreName(const OdString& name) {
    return isStore(name.toWide());
}

OdString objectUrl(const OdString& digest) {
    return L"po:" + digest;
}

OdString drawingUrl(const OdString& store, const OdString& digest) {
    return L"tf:" + store + L"#" + digest;
}

}  // namespace qrv
