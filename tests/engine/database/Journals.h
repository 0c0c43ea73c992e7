#pragma once

#include <string>
#include <string_view>

namespace qrv_test {

/// The number as SQLite writes it into its files.
inline std::string bigEndian(unsigned number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> static_cast<unsigned>(shift));
    return bytes;
}

/// A whole rollback journal of a database of `pages` pages that changes nothing, and says of itself
/// that it is a part of the journal of several databases that `name` names.
inline std::string journalThatNames(std::string_view name, unsigned pages = 1) {
    const std::string magic = "\xD9\xD5\x05\xF9\x20\xA1\x63\xD7";
    std::string bytes =
        magic + bigEndian(0) + bigEndian(7) + bigEndian(pages) + bigEndian(512) + bigEndian(4096);
    bytes.resize(512);
    unsigned sum = 0;
    for (const char each : name)
        sum += static_cast<unsigned char>(each);
    constexpr unsigned pageThatIsNeverUsed = (1U << 30) / 4096 + 1;
    bytes += bigEndian(pageThatIsNeverUsed);
    bytes += name;
    return bytes + bigEndian(static_cast<unsigned>(name.size())) + bigEndian(sum) + magic;
}

}  // namespace qrv_test
