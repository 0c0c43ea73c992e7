// A state that loads is written, and loads again as the equal state.

#include <common/state/StateFile.h>
#include <platform/kernel/OdError.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>

static Expected<common::State> load(const OdString& path) try {
    return common::deserialize(path);
} catch (const OdError& error) {
    return ErrorMessage{error.description()};
} catch (const std::length_error&) {  // The answer to a string without an end.
    return ErrorMessage();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    namespace fs = std::filesystem;
    static const std::string file =
        fs::temp_directory_path() / ("state-fuzz-" + std::to_string(std::random_device()()));
    const OdString path = OdString::fromNarrow(file);
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    if (Expected<common::State> state = load(path)) {
        // These two do not survive a writing, on purpose.
        state->head.commit.reset();
        for (common::ConflictData& conflict : state->conflicts)
            if (!conflict.handles.hasHandles())
                conflict.handles.modifiedBlocks.clear();
        if (!common::writeState(*state, path) || *load(path) != *state)
            std::abort();
    }
    fs::remove(file);
    return 0;
}
