#pragma once

#include <cli/shell/CommandLine.h>

#include <string>
#include <vector>

namespace qrv::cli {

/// The script that teaches a shell to complete the program's commands and options: what stands for
/// a file is completed as a file, and where a branch is wanted, the branches are asked for. Nothing
/// for a shell that is not "bash", "zsh" or "fish".
std::string completionScript(const std::string& shell, const std::vector<CommandText>& commands);

}  // namespace qrv::cli
