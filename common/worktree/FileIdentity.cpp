#include <common/worktree/FileIdentity.h>
#include <platform/ut/File.h>
#include <platform/ut/FileName.h>

#include <openssl/sha.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace {

/// A digest in the making.
class Sha256 {
public:
    Sha256() { SHA256_Init(&context_); }

    void update(const char* bytes, std::size_t count) { SHA256_Update(&context_, bytes, count); }

    /// Ends the digest: 64 lower-case hexadecimal digits.
    OdString finish() {
        std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
        SHA256_Final(digest.data(), &context_);
        constexpr const wchar_t* digits = L"0123456789abcdef";
        std::wstring text;
        text.reserve(2 * digest.size());
        for (const unsigned char byte : digest) {
            text += digits[byte >> 4];
            text += digits[byte & 15];
        }
        return OdString(std::move(text));
    }

private:
    SHA256_CTX context_ = {};
};

// Fits the second-level cache, so that hashing finds what reading just put there, and stays below
// the size from which allocation means fresh pages from the system each time.
constexpr std::int64_t pieceSizeBytes = std::int64_t{64} * 1024;

/// The digest of as many bytes as the file has when it is opened. One that shrinks meanwhile is
/// hashed with zeros in the place of the missing end, one that grows without what came later: the
/// same as if it were read into a zero-filled buffer of the length asked first.
OdString shaOfFile(const OdString& path) {
    ut::File file;
    file.open(path);
    std::int64_t missing = file.length();
    const auto piece = std::make_unique_for_overwrite<char[]>(
        static_cast<std::size_t>(std::min(missing, pieceSizeBytes)));
    Sha256 sha;
    bool isAtEnd = false;
    while (missing > 0) {
        const auto wanted = static_cast<std::size_t>(std::min(missing, pieceSizeBytes));
        const std::size_t count = isAtEnd ? 0 : file.read(piece.get(), wanted);
        isAtEnd = count < wanted;
        std::fill(piece.get() + count, piece.get() + wanted, '\0');
        sha.update(piece.get(), wanted);
        missing -= static_cast<std::int64_t>(wanted);
    }
    return sha.finish();
}

}  // namespace

OdString generateSha(const char* data, int length) {
    Sha256 sha;
    sha.update(data, static_cast<std::size_t>(std::max(length, 0)));
    return sha.finish();
}

OdString generateSha(const OdString& text) {
    // Not the whole narrow form when it is longer than the text: the digests in use were made so.
    const std::string narrow = text.toNarrow();
    return generateSha(narrow.data(), text.getLength());
}

namespace common {

bool isDifferent(const OdString& relativePath, const OdString& url, const RootPath& root) {
    if (url.left(2) == repositoryExt())
        return true;
    return shaOfFile(root.path() + ut::FileName::getPathSeparator() + relativePath) != url.mid(3);
}

}  // namespace common
