#pragma once

#include <cli/shell/CommandLine.h>

#include <string>
#include <vector>

namespace qrv::cli {

/// The manual page of one command, or of the program, whose command text has no name: in the form
/// of man, made from the same texts as the help.
std::string manualPage(const CommandText& command, const std::vector<CommandText>& all);

}  // namespace qrv::cli
