#include <CLI/CLI.hpp>
#include <cli/commands/RequireOne.h>

#include <algorithm>

namespace qrv_cli {

void requireOne(CLI::App& parser, const std::vector<CLI::Option*>& options,
                const std::string& names) {
    for (CLI::Option* option : options) {
        for (CLI::Option* other : options) {
            if (option != other)
                option->excludes(other);
        }
    }
    parser.parse_complete_callback([options, names] {
        if (std::none_of(options.begin(), options.end(),
                         [](const CLI::Option* option) { return option->count() > 0; }))
            throw CLI::RequiredError(names);
    });
}

}  // namespace qrv_cli
