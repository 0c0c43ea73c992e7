// How long it takes to tell whether files changed, by their digest: one large file, beside SHA-256
// over memory, and many small ones, beside a loop that opens, reads, hashes and closes each.
//
// The large file has QRV_BENCH_HASH_MEBIBYTES (1024); there are QRV_BENCH_HASH_FILES (50,000) small
// ones of 8 KiB.

#include <bench/BenchFolder.h>
#include <common/repository/RootPath.h>
#include <common/worktree/FileIdentity.h>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <openssl/sha.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t pieceBytes = 1U << 20;
constexpr std::size_t smallFileBytes = 8192;
using Digest = std::array<unsigned char, SHA256_DIGEST_LENGTH>;

std::string someBytes(std::size_t count) {
    std::string bytes(count, '\0');
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<char>(i * 2654435761U >> 16);
    return bytes;
}

class HashedFiles {
public:
    HashedFiles() {
        const std::string piece = someBytes(pieceBytes);
        std::ofstream large(folder_.path() / "large", std::ios::binary);
        for (std::size_t i = 0; i < largeMebibytes_; ++i)
            large << piece;
        const std::string small = someBytes(smallFileBytes);
        const std::size_t count = qrv_bench::sizeFromEnvironment("QRV_BENCH_HASH_FILES", 50000);
        for (std::size_t i = 0; i < count; ++i) {
            const std::string name = std::to_string(i / 1000) + "/" + std::to_string(i);
            fs::create_directories((folder_.path() / name).parent_path());
            std::ofstream(folder_.path() / name, std::ios::binary) << small;
            smallNames_.push_back(name);
        }
    }

    const common::RootPath& root() const { return root_; }
    std::string pathTo(const std::string& name) const {
        return folder_.path().string() + "/" + name;
    }
    std::size_t largeMebibytes() const { return largeMebibytes_; }
    const std::vector<std::string>& smallNames() const { return smallNames_; }

private:
    qrv_bench::BenchFolder folder_;
    common::RootPath root_ = common::RootPath::get(folder_.path().c_str(), true).value();
    std::size_t largeMebibytes_ = qrv_bench::sizeFromEnvironment("QRV_BENCH_HASH_MEBIBYTES", 1024);
    std::vector<std::string> smallNames_;
};

const HashedFiles& files() {
    static const HashedFiles made;
    return made;
}

void largeInMemory(benchmark::State& state) {
    const std::string bytes = someBytes(files().largeMebibytes() * pieceBytes);
    for (auto _ : state) {
        Digest digest;
        SHA256_CTX context;
        SHA256_Init(&context);
        SHA256_Update(&context, bytes.data(), bytes.size());
        SHA256_Final(digest.data(), &context);
        benchmark::DoNotOptimize(digest);
    }
}

void largeIsDifferent(benchmark::State& state) {
    const common::RootPath& root = files().root();
    for (auto _ : state)
        benchmark::DoNotOptimize(common::isDifferent(L"large", L"po:", root));
}

Digest hashOf(const std::string& path) {
    std::array<char, smallFileBytes> buffer;
    Digest digest;
    SHA256_CTX context;
    SHA256_Init(&context);
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    for (ssize_t count = 0; (count = read(file, buffer.data(), buffer.size())) > 0;)
        SHA256_Update(&context, buffer.data(), static_cast<std::size_t>(count));
    close(file);
    SHA256_Final(digest.data(), &context);
    return digest;
}

void smallInABareLoop(benchmark::State& state) {
    std::vector<std::string> paths;
    for (const std::string& name : files().smallNames())
        paths.push_back(files().pathTo(name));
    for (auto _ : state) {
        for (const std::string& path : paths)
            benchmark::DoNotOptimize(hashOf(path));
    }
}

void smallAreDifferent(benchmark::State& state) {
    const common::RootPath& root = files().root();
    std::vector<OdString> names;
    for (const std::string& name : files().smallNames())
        names.push_back(OdString::fromNarrow(name));
    for (auto _ : state) {
        for (const OdString& name : names)
            benchmark::DoNotOptimize(common::isDifferent(name, L"po:", root));
    }
}

BENCHMARK(largeInMemory)->Unit(benchmark::kMillisecond);
BENCHMARK(largeIsDifferent)->Unit(benchmark::kMillisecond);
BENCHMARK(smallInABareLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(smallAreDifferent)->Unit(benchmark::kMillisecond);

}  // namespace
