#include <tests/support/Files.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace qrv_test {

namespace fs = std::filesystem;

void writeFile(const fs::path& file, std::string_view bytes) {
    if (file.has_parent_path())
        fs::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream)
        throw std::runtime_error("cannot write " + file.string());
}

std::string readFile(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw std::runtime_error("cannot read " + file.string());
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> listTree(const fs::path& folder) {
    std::vector<std::string> paths;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        const std::string relative = entry.path().lexically_relative(folder).string();
        paths.push_back(entry.is_directory() && !entry.is_symlink() ? relative + "/" : relative);
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

}  // namespace qrv_test
