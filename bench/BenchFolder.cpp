#include <bench/BenchFolder.h>

#include <stdlib.h>

#include <stdexcept>
#include <system_error>

namespace qrv_bench {

namespace fs = std::filesystem;

BenchFolder::BenchFolder() {
    const char* place = getenv("QRV_BENCH_FOLDER");
    std::string pattern =
        ((place != nullptr ? fs::path(place) : fs::temp_directory_path()) / "qrv-bench-XXXXXX")
            .string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("cannot make a folder " + pattern);
    path_ = pattern;
}

BenchFolder::~BenchFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::size_t sizeFromEnvironment(const char* variable, std::size_t usual) {
    const char* text = getenv(variable);
    return text != nullptr ? std::stoul(text) : usual;
}

}  // namespace qrv_bench
