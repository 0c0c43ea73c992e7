// What it takes to open a repository, note one changed file and let go, so that the state is safely
// on the disk, beside the same with a general JSON library. The peak of the heap is told as a
// multiple of the state file's size.

#include <bench/AllocationCount.h>
#include <bench/StateDocument.h>
#include <common/state/Cache.h>
#include <common/state/Index.h>
#include <platform/kernel/OdString.h>
#include <platform/ut/ReadEntireFile.h>
#include <platform/ut/TextFile.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;

const char* const changedPath = "drawings/storey-00000001/section-00000123.dwg";

/// A host that lets no failed write pass as a result.
class StrictIo : public common::IoInterface {
public:
    bool acceptsPath(const OdString&) const override { return true; }
    void reportResult(Expected<void> result) const override { wasWritten = result.hasValue(); }
    mutable bool wasWritten = false;
};

/// A repository in a temporary folder, with a state file of that many index entries.
class Repository {
public:
    explicit Repository(std::size_t entries)
        : folder_(fs::temp_directory_path() /
                  ("qrv-bench-" + std::to_string(std::random_device()()))),
          root_(*common::RootPath::get(OdString::fromNarrow(folder_.string()), true)) {
        write(OdString(qrv_bench::stateDocument(entries)));
    }
    Repository(const Repository&) = delete;
    Repository& operator=(const Repository&) = delete;
    ~Repository() { fs::remove_all(folder_); }

    const common::RootPath& root() const { return root_; }
    OdString read() const { return ut::readEntireFile(root_.statePath()); }
    void write(const OdString& text) const {
        ut::TextFile file(root_.statePath());
        file.addLine(text);
        if (!file.write())
            throw std::runtime_error("the state file cannot be written");
    }
    double size() const {
        return static_cast<double>(fs::file_size(folder_ / ".qrv" / "qrv.state"));
    }

private:
    fs::path folder_;
    common::RootPath root_;
};

void changeWithLibrary(const Repository& repository) {
    const StrictIo io;
    std::shared_ptr<common::Cache> cache = common::Cache::get(repository.root(), io).value();
    common::updateIndex(changedPath, *cache, repository.root(), true);
    cache.reset();
    if (!io.wasWritten)
        throw std::runtime_error("the state was not written");
}

void changeWithNlohmann(const Repository& repository) {
    struct Entry {
        std::int64_t lastChecked;
        bool modified;
    };
    nlohmann::json file = nlohmann::json::parse(repository.read().toNarrow());
    std::map<std::string, Entry> index;
    for (const nlohmann::json& element : file["index"]) {
        const nlohmann::json& entry = element["data"];
        index.emplace(element["path"], Entry{entry["last_checked"], entry["modified"]});
    }
    index[changedPath] = {0, true};
    nlohmann::json elements = nlohmann::json::array();
    for (const auto& [path, entry] : index)
        elements.push_back(
            {{"path", path},
             {"data", {{"last_checked", entry.lastChecked}, {"modified", entry.modified}}}});
    file["index"] = std::move(elements);
    repository.write(OdString::fromNarrow(file.dump(4)));
}

/// Nothing but the bytes: what no way of keeping the state in one JSON file can undercut.
void rewriteOnly(const Repository& repository) {
    repository.write(repository.read());
}

template <void (*change)(const Repository&)>
void changeOneEntry(benchmark::State& state) {
    const Repository repository(static_cast<std::size_t>(state.range(0)));
    change(repository);
    for (auto _ : state)
        change(repository);
    const qrv_bench::AllocationCount count;
    change(repository);
    state.counters["peak_per_file_size"] =
        static_cast<double>(count.peakBytes()) / repository.size();
}

constexpr std::int64_t entries = 100'000;
constexpr std::int64_t manyEntries = 1'000'000;

BENCHMARK(changeOneEntry<changeWithLibrary>)
    ->Unit(benchmark::kMillisecond)
    ->Arg(entries)
    ->Arg(manyEntries);
BENCHMARK(changeOneEntry<changeWithNlohmann>)
    ->Unit(benchmark::kMillisecond)
    ->Arg(entries)
    ->Arg(manyEntries);
BENCHMARK(changeOneEntry<rewriteOnly>)
    ->Unit(benchmark::kMillisecond)
    ->Arg(entries)
    ->Arg(manyEntries);

}  // namespace
