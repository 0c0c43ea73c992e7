#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace qrv::cli {

/// A declared argument, to say more about it. Only a handle: its copies stand for the same
/// argument, which lives as long as the command line. Each function gives the argument itself
/// again.
class Argument {
public:
    explicit Argument(CLI::Option& option) : option_(&option) {}

    const Argument& required() const;
    /// Refused without the other.
    const Argument& needs(const Argument& other) const;
    /// Refused beside the other.
    const Argument& excludes(const Argument& other) const;
    /// What stands for the value of an option in the help, such as "PATH".
    const Argument& placeholder(const std::string& name) const;
    /// Asks `refusal` about each value: it gives the message for people, or nothing for a value
    /// that is taken. The help names the `rule`, if there is one.
    const Argument& check(std::function<std::string(const std::string&)> refusal,
                          const std::string& rule = {}) const;
    /// Takes only these values, which the help lists.
    const Argument& oneOf(const std::vector<std::string>& values) const;

private:
    friend class ArgumentParser;

    CLI::Option* option_;
};

/// What a command, or the part of one that is called by a word of its own, takes as arguments. Only
/// a handle, as an argument's. A value is written when the command line is parsed; it keeps what it
/// had, its default, when the argument is not given.
class ArgumentParser {
public:
    explicit ArgumentParser(CLI::App& parser) : parser_(&parser) {}

    /// An argument without a value. `names` is "--all" or "-a,--all".
    Argument addFlag(const std::string& names, bool& isGiven, const std::string& description) const;
    /// An argument with a value: "-m,--message", or without dashes, such as "PATH", one that is
    /// known by its place. Of several values none may be missing: an optional one comes last.
    Argument addOption(const std::string& names, std::string& value,
                       const std::string& description) const;
    Argument addOption(const std::string& names, std::optional<std::string>& value,
                       const std::string& description) const;
    Argument addOption(const std::string& names, std::optional<std::size_t>& value,
                       const std::string& description) const;
    /// As many values as are given.
    Argument addOption(const std::string& names, std::vector<std::string>& values,
                       const std::string& description) const;
    /// Makes exactly one of the arguments needed; `names` is how the message calls them. At most
    /// once for a parser.
    void requireOne(const std::vector<Argument>& arguments, const std::string& names) const;

    /// A word behind the command's own with arguments of its own, as "list" in `qrv ignore list`.
    /// At most one of a command's can be given.
    ArgumentParser addSubcommand(const std::string& name, const std::string& summary) const;
    /// After the command line was parsed: whether it named this one.
    bool isChosen() const;

private:
    CLI::App* parser_;
};

}  // namespace qrv::cli
