// Runs a fuzz target once over every file of the folders named as arguments, without libFuzzer.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

int main(int argumentCount, char** arguments) {
    std::size_t fileCount = 0;
    for (int index = 1; index < argumentCount; ++index) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[index])) {
            if (!entry.is_regular_file())
                continue;
            std::ifstream stream(entry.path(), std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
            // Printed first, so that the log of a crash ends with its input.
            std::printf("%s\n", entry.path().c_str());
            std::fflush(stdout);
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                   bytes.size());
            ++fileCount;
        }
    }
    if (fileCount == 0) {
        std::fprintf(stderr, "there is no seed file\n");
        return 1;
    }
    return 0;
}
