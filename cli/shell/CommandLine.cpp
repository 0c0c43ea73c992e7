#include <cli/shell/ArgumentParser.h>
#include <cli/shell/CommandLine.h>
#include <cli/shell/PersonAtTerminal.h>
#include <engine/base/Translation.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace {

constexpr const char* version = "qrv " QRV_VERSION;

ArgumentText textOf(const CLI::Option& option) {
    ArgumentText text;
    text.description = option.get_description();
    text.isOption = !option.get_positional();
    if (!text.isOption) {
        text.names.push_back(option.get_name(true));
        return text;
    }
    for (const std::string& name : option.get_snames())
        text.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        text.names.push_back("--" + name);
    if (option.get_items_expected_max() > 0)
        text.value = option.get_type_name();
    return text;
}

/// Groups of arguments are parsers without a name, too.
void addArguments(const CLI::App& parser, std::vector<ArgumentText>& arguments) {
    for (const CLI::App* group :
         parser.get_subcommands([](const CLI::App* app) { return app->get_name().empty(); }))
        for (const CLI::Option* option : group->get_options())
            arguments.push_back(textOf(*option));
    for (const CLI::Option* option : parser.get_options())
        arguments.push_back(textOf(*option));
}

std::vector<const CLI::App*> subcommandsOf(const CLI::App& parser) {
    return parser.get_subcommands([](const CLI::App* app) { return !app->get_name().empty(); });
}

CommandText textOf(const CLI::App& parser) {
    CommandText text;
    text.name = parser.get_name();
    text.summary = parser.get_description();
    addArguments(parser, text.arguments);
    for (const CLI::App* subcommand : subcommandsOf(parser))
        text.subcommands.push_back(textOf(*subcommand));
    return text;
}

/// The words of the help that the parser brings in English.
void translateHelp(CLI::FormatterBase& formatter) {
    struct Label {
        const char* key;
        const wchar_t* text;
    };
    static constexpr Label labels[] = {
        {"Usage", translatable(L"Usage")},
        {"OPTIONS", translatable(L"OPTIONS")},
        {"SUBCOMMAND", translatable(L"COMMAND")},
        {"SUBCOMMANDS", translatable(L"COMMANDS")},
        {"Positionals", translatable(L"Arguments")},
        {"REQUIRED", translatable(L"(required)")},
        {"Needs", translatable(L"with")},
        {"Excludes", translatable(L"without")},
        {"TEXT", translatable(L"TEXT")},
        {"POSITIVE", translatable(L"above 0")},
    };
    for (const Label& label : labels)
        formatter.label(label.key, tr(label.text).toNarrow());
}

/// No word of a command line holds one, so that a word with one behind it is nothing but itself to
/// the parser, which has a meaning of its own for "[a,b]", for "++" and for a missing value.
constexpr char endOfWord = '\0';

bool needsEnd(const std::string& word) {
    return word.empty() || word == "++" || word.ends_with(']') ||
           (word.starts_with('-') && word.ends_with('='));
}

/// The words behind the program's name, the last one first, as the parser takes them.
std::vector<std::string> wordsForParser(int argumentCount, const char* const* arguments) {
    std::vector<std::string> words(arguments + std::min(argumentCount, 1),
                                   arguments + argumentCount);
    for (std::string& word : words) {
        if (needsEnd(word))
            word += endOfWord;
    }
    std::reverse(words.begin(), words.end());
    return words;
}

std::string withoutEnd(std::string word) {
    if (word.ends_with(endOfWord))
        word.pop_back();
    return word;
}

void prepareOptions(CLI::App& parser) {
    for (CLI::Option* option : parser.get_options()) {
        option->transform(withoutEnd);
        // What stands without an option says by its name what it is.
        if (option->get_positional())
            option->type_name("");
    }
    for (CLI::App* subcommand : parser.get_subcommands({})) {
        if (!subcommand->get_name().empty())
            subcommand->group(trUtf8(L"Commands"));
        prepareOptions(*subcommand);
    }
}

}  // namespace

CommandLine::CommandLine(std::span<const Command> commands)
    : parser_(std::make_unique<CLI::App>(trUtf8(L"Versions a folder of drawings."), "qrv")) {
    translateHelp(*parser_->get_formatter());
    parser_->option_defaults()->group(trUtf8(L"Options"));
    parser_->set_help_flag("-h,--help", trUtf8(L"Print this help message and exit"));
    parser_->set_version_flag("--version", version,
                              trUtf8(L"Display program version information and exit"));
    parser_->add_option("-C", folder_, trUtf8(L"Work as if started in the folder DIR"))
        ->type_name("DIR");
    // At most one, so that a folder may be called like a command. None is answered by the caller:
    // the parser would not name the word that it took for a command.
    parser_->require_subcommand(0, 1);
    for (const Command& command : commands) {
        CLI::App* const parser = parser_->add_subcommand(command.name, trUtf8(command.summary));
        parser->callback(
            [this, action = command.declare(ArgumentParser(*parser)), name = command.name] {
                chosen_ = action;
                person().setCommand(name);
            });
    }
    prepareOptions(*parser_);
}

CommandLine::~CommandLine() = default;

Expected<void> CommandLine::parse(int argumentCount, const char* const* arguments) {
    try {
        parser_->parse(wordsForParser(argumentCount, arguments));
    } catch (const CLI::ParseError& error) {
        // A wish for the help or the version is one of the parser's errors too.
        if (error.get_exit_code() != 0)
            return ErrorMessage{OdString(error.what())};
        std::ostringstream text;
        std::ostringstream unused;
        parser_->exit(error, text, unused);
        wishedText_ = text.str();
    }
    return {};
}

std::string CommandLine::help() const {
    return parser_->help();
}

std::vector<CommandText> CommandLine::texts() const {
    CommandText program = textOf(*parser_);
    program.name.clear();
    std::vector<CommandText> all = std::move(program.subcommands);
    program.subcommands.clear();
    all.insert(all.begin(), std::move(program));
    return all;
}

}  // namespace qrv::cli
