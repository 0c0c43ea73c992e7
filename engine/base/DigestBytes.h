#pragma once

#include <array>
#include <string>
#include <string_view>

namespace qrv {

/// A SHA-256 digest in its short form, which files and long lists hold.
using DigestBytes = std::array<unsigned char, 32>;

/// Of digits as `isDigest` knows them; all zero for anything else.
DigestBytes toDigestBytes(std::string_view digits);

/// The digits.
std::string toDigits(const DigestBytes& digest);

}  // namespace qrv
