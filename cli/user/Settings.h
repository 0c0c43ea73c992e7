#pragma once

#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace qrv::cli {

/// What a person can set for all repositories, kept as one JSON object in `settings.json` in the
/// folder of the user's configuration (see ProjectRegistry.h). A missing file or key means the
/// default. docs/formats/settings-file.md describes the file.
struct Settings {
    /// Of files and commits above these sizes a note warns, in megabytes of 1,000,000 bytes; 0 for
    /// never.
    std::int64_t largeFileMegabytes = 100;
    std::int64_t largeCommitMegabytes = 1000;
    /// Whether what is made in a shared repository follows its folder (SharedMode.h); 0 for no.
    std::int64_t sharedFolders = 1;
};

/// One of them, as a person names it.
struct Setting {
    const char* key;
    /// In English; the catalogue may have another.
    const wchar_t* summary;
    std::int64_t Settings::*value;
};

/// In the order of their keys.
std::span<const Setting> allSettings();

/// The setting of that key. Fails with a message that names the keys that there are.
Expected<Setting> findSetting(const std::string& key);

/// Fails with a message that names the file when it cannot be read, is no JSON object, or has a
/// value that cannot be one.
Expected<Settings> readSettings();

/// The value that a person typed: digits, at most 1,000,000,000.
Expected<std::int64_t> parseSettingValue(const std::string& text);

/// Writes the one value and leaves everything else in the file as it is, also keys that this
/// program does not know. Fails with a message that names the file, also when another value in it
/// cannot be one; the old file stays then.
Expected<void> changeSetting(const Setting& setting, std::int64_t value);

/// The repositories of other people that the user trusts: the paths of their folders, absolute and
/// without links, each once, in order. Fails like `readSettings`, whatever the other settings are.
Expected<std::vector<OdString>> trustedFolders();

/// Writes this list and leaves everything else in the file as it is. Fails like `changeSetting`.
Expected<void> changeTrustedFolders(const std::vector<OdString>& folders);

}  // namespace qrv::cli
