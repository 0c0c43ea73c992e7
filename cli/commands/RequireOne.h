#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace qrv_cli {

/// Makes exactly one of the options needed; `names` is how the message calls them. Unlike a group
/// of the parser's, this leaves them in their places in the help.
void requireOne(CLI::App& parser, const std::vector<CLI::Option*>& options,
                const std::string& names);

}  // namespace qrv_cli
