#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace qrv_test {

/// Writes the bytes to the file, making the folders above it.
void writeFile(const std::filesystem::path& file, std::string_view bytes);
/// The file's bytes. Throws when it cannot be read.
std::string readFile(const std::filesystem::path& file);
/// The relative paths of everything below the folder, folders with a trailing slash, sorted.
std::vector<std::string> listTree(const std::filesystem::path& folder);

}  // namespace qrv_test
