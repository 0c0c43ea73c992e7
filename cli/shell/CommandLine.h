#pragma once

#include <cli/shell/Command.h>
#include <common/base/Expected.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace qrv::cli {

/// What a person reads of one argument.
struct ArgumentText {
    /// "-m" and "--message"; of a file or the like without an option, its placeholder "PATH".
    std::vector<std::string> names;
    /// The placeholder of the option's value; empty for a flag.
    std::string value;
    std::string description;
    bool isOption = true;
};

struct CommandText {
    std::string name;
    std::string summary;
    std::vector<ArgumentText> arguments;
    /// What the command can be told to do, as `list` in `qrv ignore list`.
    std::vector<CommandText> subcommands;
};

/// The parser of the command line with all commands that it is given. It parses once; the help, the
/// completion of the shells and the manual pages are all made from it, so that they say the same.
class CommandLine {
public:
    /// The help lists the commands in this order. They must outlive the command line.
    explicit CommandLine(std::span<const Command> commands);
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;
    ~CommandLine();

    /// Takes each word as it is, also one that has the form of a list, such as "[a,b]". Fails with
    /// what is wrong with the words.
    Expected<void> parse(int argumentCount, const char* const* arguments);

    /// The help or the version, if the command line wishes for one of them instead of a command.
    const std::optional<std::string>& wishedText() const { return wishedText_; }
    /// What the parsed command does; empty without a command.
    const Action& chosen() const { return chosen_; }
    /// The folder that `-C` named.
    const std::optional<std::string>& folder() const { return folder_; }

    /// The help of the program itself.
    std::string help() const;
    /// The program itself first, with an empty name, then the commands in the order of the help.
    std::vector<CommandText> texts() const;

private:
    std::unique_ptr<CLI::App> parser_;
    std::optional<std::string> wishedText_;
    Action chosen_;
    std::optional<std::string> folder_;
};

}  // namespace qrv::cli
