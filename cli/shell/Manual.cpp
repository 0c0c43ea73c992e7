#include <cli/shell/Manual.h>

#include <algorithm>

namespace qrv::cli {

namespace {

/// What man would take for a request or a sign of its own.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char unit : text) {
        if (unit == '\\')
            result += "\\e";
        else if (unit == '-')
            result += "\\-";
        else if (unit == '\'')
            result += "\\(aq";
        else
            result += unit;
    }
    return result.rfind('.', 0) == 0 ? "\\&" + result : result;
}

std::string pageName(const CommandText& command) {
    return command.name.empty() ? "qrv" : "qrv-" + command.name;
}

std::string upperCase(std::string text) {
    for (char& unit : text) {
        if (unit >= 'a' && unit <= 'z')
            unit = static_cast<char>(unit - 'a' + 'A');
    }
    return text;
}

std::string namesOf(const ArgumentText& argument) {
    std::string names;
    for (const std::string& name : argument.names)
        names += (names.empty() ? "\\fB" : ", \\fB") + escaped(name) + "\\fR";
    return argument.value.empty() ? names : names + " \\fI" + escaped(argument.value) + "\\fR";
}

bool isAmong(const ArgumentText& argument, const std::vector<ArgumentText>& all) {
    return std::any_of(all.begin(), all.end(), [&argument](const ArgumentText& other) {
        return other.names == argument.names;
    });
}

std::string synopsis(const CommandText& command) {
    std::string line = ".B qrv\n";
    if (command.name.empty())
        return line + "[\\fIOPTIONS\\fR] \\fICOMMAND\\fR ...\n";
    line += ".B " + escaped(command.name) + "\n[\\fIOPTIONS\\fR]";
    if (!command.subcommands.empty())
        line += " [\\fICOMMAND\\fR ...]";
    for (const ArgumentText& argument : command.arguments) {
        if (!argument.isOption)
            line += " [\\fI" + escaped(argument.names.front()) + "\\fR]";
    }
    return line + "\n";
}

std::string section(const std::string& title, const std::vector<ArgumentText>& arguments,
                    bool options) {
    std::string text;
    for (const ArgumentText& argument : arguments) {
        if (argument.isOption == options)
            text += ".TP\n" + namesOf(argument) + "\n" + escaped(argument.description) + "\n";
    }
    return text.empty() ? text : ".SH " + title + "\n" + text;
}

std::string commandList(const std::vector<CommandText>& all) {
    std::string text = ".SH COMMANDS\n";
    for (const CommandText& command : all) {
        if (!command.name.empty())
            text += ".TP\n\\fB" + escaped(pageName(command)) + "\\fR(1)\n" +
                    escaped(command.summary) + "\n";
    }
    return text;
}

/// Options that every level has are told once, for the whole command.
std::string subcommandList(const CommandText& command) {
    std::string text;
    for (const CommandText& subcommand : command.subcommands) {
        text += ".TP\n\\fB" + escaped(subcommand.name) + "\\fR";
        for (const ArgumentText& argument : subcommand.arguments) {
            if (!argument.isOption)
                text += " \\fI" + escaped(argument.names.front()) + "\\fR";
        }
        text += "\n" + escaped(subcommand.summary) + "\n";
        for (const ArgumentText& argument : subcommand.arguments) {
            if (!isAmong(argument, command.arguments))
                text += ".RS\n.TP\n" + namesOf(argument) + "\n" + escaped(argument.description) +
                        "\n.RE\n";
        }
    }
    return text.empty() ? text : ".SH COMMANDS\n" + text;
}

constexpr const char* exitStatus =
    ".SH EXIT STATUS\n.TP\n0\nDone.\n.TP\n1\nFailed, or conflicts are open; a message says why.\n"
    ".TP\n2\nWrong usage.\n";

}  // namespace

std::string manualPage(const CommandText& command, const std::vector<CommandText>& all) {
    const std::string name = pageName(command);
    std::string page = ".TH " + upperCase(escaped(name)) + " 1 \"\" \"qrv " QRV_VERSION "\"\n";
    page += ".SH NAME\n" + escaped(name) + " \\- " + escaped(command.summary) + "\n";
    page += ".SH SYNOPSIS\n" + synopsis(command);
    page += section("ARGUMENTS", command.arguments, false);
    page += section("OPTIONS", command.arguments, true);
    page += subcommandList(command);
    if (command.name.empty())
        page += commandList(all);
    return page + exitStatus;
}

}  // namespace qrv::cli
