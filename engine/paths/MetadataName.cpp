#include <engine/paths/Layout.h>
#include <engine/paths/MetadataNameInternal.h>

#include <algorithm>
#include <cstddef>
#include <string>

namespace qrv {

namespace {

constexpr std::string_view folderName = layout::metadataFolder;

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isBetween(std::string_view sequence, std::string_view first, std::string_view last) {
    return sequence >= first && sequence <= last;
}

// The code points that HFS+ leaves out when it compares names, each of three bytes in UTF-8: U+200C
// to U+200F, U+202A to U+202E, U+206A to U+206F and U+FEFF.
// They are written as bytes here, so that no reader of this file is misled.
// NOLINTBEGIN(misc-misleading-bidirectional)
bool isIgnored(std::string_view sequence) {
    return isBetween(sequence, "\xE2\x80\x8C", "\xE2\x80\x8F") ||
           isBetween(sequence, "\xE2\x80\xAA", "\xE2\x80\xAE") ||
           isBetween(sequence, "\xE2\x81\xAA", "\xE2\x81\xAF") || sequence == "\xEF\xBB\xBF";
}
// NOLINTEND(misc-misleading-bidirectional)

// No character beyond ASCII has q, r, v or the full stop for its other case or its decomposition,
// so that nothing but A to Z needs folding.
std::string folded(std::string_view name) {
    constexpr std::size_t ignoredLength = 3;
    constexpr unsigned char firstByteOfIgnored = 0xE2;
    std::string result;
    for (std::size_t at = 0; at < name.size();) {
        // None of them begins below; asking only then makes a scan's worth of names much cheaper.
        const bool mayBeIgnored = static_cast<unsigned char>(name[at]) >= firstByteOfIgnored;
        if (mayBeIgnored && isIgnored(name.substr(at, ignoredLength))) {
            at += ignoredLength;
        } else {
            result += lower(name[at]);
            ++at;
        }
    }
    // NTFS: a stream of the folder, such as its index, is the folder itself.
    result.resize(std::min(result.find(':'), result.size()));
    result.resize(result.find_last_not_of(". ") + 1);
    return result;
}

bool isOf(std::string_view text, std::string_view characters) {
    return !text.empty() && text.find_first_not_of(characters) == std::string_view::npos;
}

// The names of eight characters that NTFS makes beside ".qrv": "QRV~1", counting up while the name
// is taken, then "QR", four digits of a hash and the same end. Which hash is not asked: few files
// are called so.
bool isShortName(std::string_view name) {
    constexpr std::size_t hashLength = 4;
    const std::size_t tilde = name.find('~');
    if (tilde == std::string_view::npos || !isOf(name.substr(tilde + 1), "0123456789"))
        return false;
    const std::string_view begin = name.substr(0, tilde);
    return begin == "qrv" || (begin.starts_with("qr") && begin.size() == 2 + hashLength &&
                              isOf(begin.substr(2), "0123456789abcdef"));
}

}  // namespace

bool couldBeMetadataFolder(std::string_view name) {
    const std::string plain = folded(name);
    return plain == folderName || isShortName(plain);
}

}  // namespace qrv
