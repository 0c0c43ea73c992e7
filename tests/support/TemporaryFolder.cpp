#include <tests/support/TemporaryFolder.h>

#include <stdlib.h>

#include <stdexcept>

namespace qrv_test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (fs::temp_directory_path() / "qrv-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("cannot make a temporary folder");
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    // A test may have taken rights away; those of the folder itself are enough to remove most of
    // it.
    fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(path_, ignored);
}

OdString TemporaryFolder::text(const std::string& relative) const {
    return OdString::fromNarrow(relative.empty() ? path_.string() : (path_ / relative).string());
}

}  // namespace qrv_test
