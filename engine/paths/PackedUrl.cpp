#include <engine/base/Digest.h>
#include <engine/base/Hex.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/PackedUrl.h>

namespace qrv {

namespace {

constexpr std::size_t digestBytes = digestLength / 2;
/// Most stores are named by a digest of half the length.
constexpr std::size_t bytesOfUsualStore = 16;

constexpr char objectForm = 1;
constexpr char drawingForm = 2;
/// A drawing whose store has a name of 32 digits, which are kept as bytes.
constexpr char shortDrawingForm = 3;

std::optional<OdString> toUrl(char form, const OdString& digest, std::string_view rest) {
    if (form == objectForm && rest.empty())
        return objectUrl(digest);
    if (form == shortDrawingForm && rest.size() == bytesOfUsualStore)
        return drawingUrl(OdString::fromNarrow(toHex(rest)), digest);
    // Another form of a URL that has one already would be none.
    if (form == drawingForm && fromHex(rest).size() != bytesOfUsualStore)
        return drawingUrl(OdString::fromNarrow(rest), digest);
    return std::nullopt;
}

}  // namespace

std::string packedUrl(const OdString& url) {
    const Expected<CheckedUrl> checked = CheckedUrl::check(url);
    if (!checked)
        return url.toNarrow();
    const std::string digest = fromHex(checked->digest().toNarrow());
    if (!checked->isDrawing())
        return objectForm + digest;
    const std::string store = checked->store().toNarrow();
    const std::string bytes = fromHex(store);
    return bytes.size() == bytesOfUsualStore ? shortDrawingForm + digest + bytes
                                             : drawingForm + digest + store;
}

std::optional<OdString> unpackedUrl(std::string_view bytes) {
    if (bytes.empty())
        return OdString();
    if (bytes.size() < 1 + digestBytes)
        return std::nullopt;
    const OdString digest = OdString::fromNarrow(toHex(bytes.substr(1, digestBytes)));
    std::optional<OdString> url = toUrl(bytes.front(), digest, bytes.substr(1 + digestBytes));
    return url && isCheckedUrl(*url) ? url : std::nullopt;
}

}  // namespace qrv
