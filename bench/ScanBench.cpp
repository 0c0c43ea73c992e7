// How long the scan of a large working tree takes, beside the least that any program must do: one
// pass with openat and readdir that takes each entry's kind from the folder.
//
// QRV_BENCH_SCAN_FOLDERS folders (20,000) with ten files each, of which the default rules leave out
// one in eight.

#include <bench/BenchFolder.h>
#include <common/repository/RootPath.h>
#include <common/worktree/CollectFiles.h>

#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t filesInAFolder = 10;

class WorkingTree {
public:
    WorkingTree() {
        const std::size_t folders = qrv_bench::sizeFromEnvironment("QRV_BENCH_SCAN_FOLDERS", 20000);
        std::size_t made = 0;
        for (std::size_t folder = 0; folder < folders; ++folder) {
            const fs::path path = folder_.path() / ("site_" + std::to_string(folder / 1000)) /
                                  ("building_" + std::to_string(folder / 50 % 20)) /
                                  ("floor_" + std::to_string(folder % 50));
            fs::create_directories(path);
            for (std::size_t file = 0; file < filesInAFolder; ++file, ++made) {
                const char* extension = made % 8 == 7 ? ".bak" : ".dwg";
                std::ofstream(path / ("drawing_" + std::to_string(made) + extension));
            }
        }
    }

    const fs::path& path() const { return folder_.path(); }
    const common::RootPath& root() const { return root_; }

private:
    qrv_bench::BenchFolder folder_;
    common::RootPath root_ = common::RootPath::get(folder_.path().c_str(), true).value();
};

const WorkingTree& tree() {
    static const WorkingTree made;
    return made;
}

bool isDots(std::string_view name) {
    return name == "." || name == "..";
}

/// Visits every folder once and counts the regular files.
std::size_t countFiles(const std::string& top) {
    std::size_t files = 0;
    std::vector<std::string> pending = {top};
    while (!pending.empty()) {
        const std::string path = std::move(pending.back());
        pending.pop_back();
        DIR* folder = fdopendir(openat(AT_FDCWD, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder == nullptr)
            continue;
        while (const dirent* entry = readdir(folder)) {
            if (entry->d_type == DT_REG)
                ++files;
            else if (entry->d_type == DT_DIR && !isDots(entry->d_name))
                pending.push_back(path + "/" + entry->d_name);
        }
        closedir(folder);
    }
    return files;
}

void setCounts(benchmark::State& state, std::size_t files) {
    state.counters["files"] = static_cast<double>(files);
}

void bareReaddir(benchmark::State& state) {
    const std::string top = tree().path().string();
    std::size_t files = 0;
    for (auto _ : state)
        files = countFiles(top);
    setCounts(state, files);
}

void directoryIterator(benchmark::State& state) {
    std::size_t files = 0;
    for (auto _ : state) {
        files = 0;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(tree().path()))
            files += entry.is_regular_file() ? 1U : 0U;
    }
    setCounts(state, files);
}

void repositoryScan(benchmark::State& state) {
    const common::RootPath& root = tree().root();
    std::size_t files = 0;
    for (auto _ : state) {
        const auto found = common::collectRepoFiles([](const OdString&) {}, root);
        files = found->size();
    }
    setCounts(state, files);
}

BENCHMARK(bareReaddir)->Unit(benchmark::kMillisecond);
BENCHMARK(directoryIterator)->Unit(benchmark::kMillisecond);
BENCHMARK(repositoryScan)->Unit(benchmark::kMillisecond);

}  // namespace
