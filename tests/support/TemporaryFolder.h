#pragma once

#include <platform/kernel/OdString.h>

#include <filesystem>
#include <string>

namespace qrv_test {

/// A new empty folder of one test, removed with all it holds when the test ends.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& path() const { return path_; }
    /// The path of `relative` in the folder, as a text.
    OdString text(const std::string& relative = "") const;
    std::filesystem::path operator/(const std::string& relative) const { return path_ / relative; }

private:
    std::filesystem::path path_;
};

}  // namespace qrv_test
