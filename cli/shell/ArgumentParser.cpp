#include <cli/shell/ArgumentParser.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <utility>

namespace qrv::cli {

const Argument& Argument::required() const {
    option_->required();
    return *this;
}

const Argument& Argument::needs(const Argument& other) const {
    option_->needs(other.option_);
    return *this;
}

const Argument& Argument::excludes(const Argument& other) const {
    option_->excludes(other.option_);
    return *this;
}

const Argument& Argument::placeholder(const std::string& name) const {
    option_->type_name(name);
    return *this;
}

const Argument& Argument::check(std::function<std::string(const std::string&)> refusal,
                                const std::string& rule) const {
    option_->check(std::move(refusal), rule);
    return *this;
}

const Argument& Argument::oneOf(const std::vector<std::string>& values) const {
    option_->check(CLI::IsMember(values));
    return *this;
}

Argument ArgumentParser::addFlag(const std::string& names, bool& isGiven,
                                 const std::string& description) const {
    return Argument(*parser_->add_flag(names, isGiven, description));
}

Argument ArgumentParser::addOption(const std::string& names, std::string& value,
                                   const std::string& description) const {
    return Argument(*parser_->add_option(names, value, description));
}

Argument ArgumentParser::addOption(const std::string& names, std::optional<std::string>& value,
                                   const std::string& description) const {
    return Argument(*parser_->add_option(names, value, description));
}

Argument ArgumentParser::addOption(const std::string& names, std::optional<std::size_t>& value,
                                   const std::string& description) const {
    return Argument(*parser_->add_option(names, value, description));
}

Argument ArgumentParser::addOption(const std::string& names, std::vector<std::string>& values,
                                   const std::string& description) const {
    return Argument(*parser_->add_option(names, values, description));
}

/// Unlike a group of the library's, this leaves the arguments in their places in the help.
void ArgumentParser::requireOne(const std::vector<Argument>& arguments,
                                const std::string& names) const {
    for (const Argument& argument : arguments) {
        for (const Argument& other : arguments) {
            if (argument.option_ != other.option_)
                argument.excludes(other);
        }
    }
    parser_->parse_complete_callback([arguments, names] {
        if (std::none_of(arguments.begin(), arguments.end(),
                         [](const Argument& argument) { return argument.option_->count() > 0; }))
            throw CLI::RequiredError(names);
    });
}

ArgumentParser ArgumentParser::addSubcommand(const std::string& name,
                                             const std::string& summary) const {
    parser_->require_subcommand(0, 1);
    return ArgumentParser(*parser_->add_subcommand(name, summary));
}

bool ArgumentParser::isChosen() const {
    return parser_->parsed();
}

}  // namespace qrv::cli
