// Read row by row or, behind a byte-order mark, as a JSON value, a file gives the same state or
// error. A state is written as the JSON writer would, and loads again as the equal state.

#include <common/common.h>
#include <common/state/StateFile.h>
#include <platform/ut/ReadEntireFile.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;
static const auto file = fs::temp_directory_path() / ("state-fuzz-" + std::to_string(getpid()));

static std::pair<common::State, OdString> load(const std::string& bytes) try {
    std::ofstream(file, std::ios::binary) << bytes;
    const auto state = common::deserialize(file.c_str());
    return {state ? *state : common::State(), state ? OdString() : state.error().message};
} catch (const std::exception& error) {
    return {common::State(), error.what()};
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(bytes), size);
    auto [state, error] = load(input);
    const bool isMarked = size > 0 && bytes[0] >= 0xEF;
    bool holds = isMarked || load("\xEF\xBB\xBF" + input) == std::pair(state, error);
    for (common::ConflictData& conflict : state.conflicts)
        if (!conflict.handles.hasHandles())
            conflict.handles.modifiedBlocks.clear();  // Lost in writing, as the commit is.
    state.head.commit.reset();
    holds = holds && common::writeState(state, file.c_str());
    const std::wstring text = ut::readEntireFile(file.c_str()).toWide();
    jsonlib::json::Value tree;
    holds = holds && jsonlib::json::read(text.data(), text.data() + text.size(), tree) &&
            jsonlib::json::write(tree) == text && load(OdString(text).toNarrow()).first == state;
    fs::remove(file);
    return holds ? 0 : (std::abort(), 1);
}
