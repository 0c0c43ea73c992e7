// Loading any ignore file ends without harm, and a simple glob answers as the expression made of
// it. The input is the file and, behind a NUL, the name that is matched.

#include <common/worktree/RepoIgnore.h>
#include <common/worktree/SimpleGlobInternal.h>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

static const auto folder = fs::temp_directory_path() / ("qrv-fuzz-" + std::to_string(getpid()));

static common::RootPath makeRepository() {
    std::atexit([] { fs::remove_all(folder); });
    fs::create_directories(folder / ".qrv/properties");
    return common::RootPath::get(folder.c_str(), false).value();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(bytes), size);
    const std::string rules = input.substr(0, input.find('\0'));
    const std::string name = rules.size() < size ? input.substr(rules.size() + 1, 64) : "";
    static const common::RootPath root = makeRepository();
    std::ofstream(root.propertiesPath().toNarrow() + "/ignore", std::ios::binary) << rules;
    const auto expressions = common::RepoIgnore([](const OdString&) {}, root).expressions();
    // More stars take the expression too long. Other line ends and byte-order marks are not the
    // rule's.
    if (expressions.size() != 1 || rules.find_first_of("#\r\n") != rules.npos || rules[0] < 0 ||
        std::count(rules.begin(), rules.end(), '*') > 3)
        return 0;
    const auto glob = common::SimpleGlob::from(OdString::fromNarrow(rules));
    if (glob && glob->matches(name) != std::regex_match(name, expressions[0]))
        std::abort();
    return 0;
}
