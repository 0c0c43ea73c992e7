#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace qrv_bench {

/// A new folder for a benchmark's files, removed with them: in the folder that QRV_BENCH_FOLDER
/// names, otherwise in the system's for temporary files.
class BenchFolder {
public:
    BenchFolder();
    BenchFolder(const BenchFolder&) = delete;
    BenchFolder& operator=(const BenchFolder&) = delete;
    ~BenchFolder();

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// The number in the environment variable, or `usual` where there is none: a smoke run asks for
/// less.
std::size_t sizeFromEnvironment(const char* variable, std::size_t usual);

}  // namespace qrv_bench
