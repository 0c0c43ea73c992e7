#pragma once

#include <platform/kernel/OdString.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace qrv {

/// How many digits a digest has.
inline constexpr std::size_t digestLength = 64;

constexpr bool isDigitOfDigest(wchar_t unit) {
    return (unit >= L'0' && unit <= L'9') || (unit >= L'a' && unit <= L'f');
}

/// Whether the text has the form of a digest: 64 lower-case hexadecimal digits.
constexpr bool isDigest(std::wstring_view text) {
    return text.size() == digestLength && std::all_of(text.begin(), text.end(), isDigitOfDigest);
}

inline bool isDigest(const OdString& text) {
    return isDigest(std::wstring_view(text.toWide()));
}

/// A SHA-256 digest of bytes that come piece by piece.
class Digest {
public:
    Digest();
    Digest(Digest&&) noexcept;
    Digest& operator=(Digest&&) noexcept;
    ~Digest();

    /// The next piece.
    void add(std::span<const char> bytes);
    /// The digest, in the form that `isDigest` knows. Nothing may be added afterwards.
    std::string finish();

    /// The digest of bytes that are all there.
    static std::string of(std::string_view bytes);

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

}  // namespace qrv
