#include <engine/base/DigestBytes.h>
#include <engine/base/Hex.h>

#include <algorithm>

namespace qrv {

DigestBytes toDigestBytes(std::string_view digits) {
    DigestBytes digest = {};
    const std::string bytes = fromHex(digits);
    if (bytes.size() == digest.size())
        std::copy(bytes.begin(), bytes.end(), digest.begin());
    return digest;
}

std::string toDigits(const DigestBytes& digest) {
    return toHex({reinterpret_cast<const char*>(digest.data()), digest.size()});
}

}  // namespace qrv
