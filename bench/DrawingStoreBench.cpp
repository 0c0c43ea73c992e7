// Stores the revisions of a drawing, one after the other under one name, and restores three of
// them:
//
//     qrv_bench_drawings <empty folder> <revision> <revision> ...
//
// Prints, as JSON, the seconds that each took, and the bytes of the store. drawings.py makes the
// revisions and sets the figures beside those of a packed git repository.

#include <cli/storage/DrawingStorage.h>
#include <common/repository/RootPath.h>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const char* const drawing = "plan.dwg";

double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <class T>
T require(Expected<T> outcome) {
    if (!outcome)
        throw std::runtime_error(outcome.error().message.toNarrow());
    return std::move(outcome).value();
}

std::uintmax_t bytesBelow(const fs::path& folder) {
    std::uintmax_t bytes = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
        bytes += entry.is_regular_file() ? entry.file_size() : 0;
    return bytes;
}

void printList(const char* name, const std::vector<double>& numbers) {
    std::cout << '"' << name << "\": [";
    for (std::size_t i = 0; i < numbers.size(); ++i)
        std::cout << (i == 0 ? "" : ", ") << numbers[i];
    std::cout << "], ";
}

void run(const fs::path& folder, const std::vector<fs::path>& revisions) {
    const common::RootPath root = require(common::RootPath::get(OdString(folder.c_str()), true));
    OdString previous;
    qrv_cli::DrawingStorage storage([&](const OdString&) { return previous; });
    std::vector<OdString> urls;
    std::vector<double> storing;
    for (const fs::path& revision : revisions) {
        fs::copy_file(revision, folder / drawing, fs::copy_options::overwrite_existing);
        storing.push_back(
            secondsOf([&] { previous = require(storage.store(root, OdString(drawing))); }));
        urls.push_back(previous);
    }
    std::vector<double> restoring;
    for (const std::size_t i : {std::size_t{0}, urls.size() / 2, urls.size() - 1})
        restoring.push_back(
            secondsOf([&] { require(storage.restore(root, urls[i], OdString(drawing))); }));
    std::vector<double> restoringAny;
    for (const OdString& url : urls)
        restoringAny.push_back(
            secondsOf([&] { require(storage.restore(root, url, OdString(drawing))); }));
    std::cout << "{";
    printList("store", storing);
    printList("restore", restoring);
    printList("restoreAny", restoringAny);
    std::cout << "\"bytes\": " << bytesBelow(folder / ".qrv" / "tf") << "}\n";
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc < 3) {
        std::cerr << "usage: qrv_bench_drawings <empty folder> <revision>...\n";
        return 2;
    }
    run(argv[1], {argv + 2, argv + argc});
    return EXIT_SUCCESS;
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return EXIT_FAILURE;
}
