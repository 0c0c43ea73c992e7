#include <CLI/CLI.hpp>
#include <cli/CommandLine.h>
#include <cli/Translation.h>

namespace qrv_cli {

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

CommandText textOf(const CLI::App& parser, const std::string& name) {
    CommandText text;
    text.name = name;
    text.summary = parser.get_description();
    addArguments(parser, text.arguments);
    return text;
}

}  // namespace

CommandLine::CommandLine()
    : parser_(std::make_unique<CLI::App>(trUtf8(L"Versions a folder of drawings."), "qrv")) {
    parser_->set_help_flag("-h,--help", trUtf8(L"Print this help message and exit"));
    parser_->set_version_flag("--version", version,
                              trUtf8(L"Display program version information and exit"));
    parser_->add_option("-C", folder_, trUtf8(L"Work as if started in the folder DIR"))
        ->type_name("DIR");
    // At most one, so that a folder may be called like a command. None is answered by the caller:
    // the parser would not name the word that it took for a command.
    parser_->require_subcommand(0, 1);
    for (const Command& command : commands()) {
        CLI::App* const parser = parser_->add_subcommand(command.name, trUtf8(command.summary));
        parser->callback([this, action = command.declare(*parser)] { chosen_ = action; });
    }
}

CommandLine::~CommandLine() = default;

std::vector<CommandText> CommandLine::texts() const {
    const CLI::App& parser = *parser_;
    std::vector<CommandText> all = {textOf(parser, "")};
    for (const CLI::App* command :
         parser.get_subcommands([](const CLI::App* app) { return !app->get_name().empty(); }))
        all.push_back(textOf(*command, command->get_name()));
    return all;
}

}  // namespace qrv_cli
