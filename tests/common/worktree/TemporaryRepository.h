#pragma once

#include <common/repository/RootPath.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace qrv_test {

/// A new repository in a folder of its own, without an ignore file.
struct TemporaryRepository {
    TemporaryFolder folder;
    common::RootPath root = common::RootPath::get(folder.text(), true).value();

    void writeRules(std::string_view bytes) const {
        writeFile(folder / ".qrv/properties/ignore", bytes);
    }
};

/// The texts' narrow forms, which a failing test can print.
inline std::vector<std::string> narrow(const std::vector<OdString>& texts) {
    std::vector<std::string> bytes;
    for (const OdString& text : texts)
        bytes.push_back(text.toNarrow());
    return bytes;
}

}  // namespace qrv_test
