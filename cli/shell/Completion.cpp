#include <cli/shell/Completion.h>

#include <algorithm>

namespace qrv::cli {

namespace {

/// Within single quotes of each of the three shells' words.
std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char unit : text) {
        if (unit == '\'')
            result += "'\\''";
        else
            result += unit;
    }
    return result + "'";
}

bool standsForReference(const std::string& placeholder) {
    return placeholder == "COMMIT" || placeholder == "BRANCH";
}

/// "COMMIT", "BRANCH" or nothing: what the command takes, at first without an option.
std::string referenceOf(const CommandText& command) {
    for (const bool isOption : {false, true}) {
        for (const ArgumentText& argument : command.arguments) {
            const std::string& placeholder = isOption ? argument.value : argument.names.front();
            if (argument.isOption == isOption && standsForReference(placeholder))
                return placeholder;
        }
    }
    return {};
}

/// The commands that list the names of the repository that can be written behind the command.
std::string listOfNames(const CommandText& command) {
    const std::string reference = referenceOf(command);
    if (reference == "COMMIT")
        return "qrv branch --names 2>/dev/null; qrv tag --names 2>/dev/null";
    return reference.empty() ? reference : "qrv branch --names 2>/dev/null";
}

/// Files are offered wherever it is not known that none is wanted.
bool takesFiles(const CommandText& command) {
    return std::none_of(command.arguments.begin(), command.arguments.end(),
                        [](const ArgumentText& argument) {
                            return !argument.isOption && standsForReference(argument.names.front());
                        });
}

/// All that can be written behind the command, but for names.
std::string bashWords(const CommandText& command) {
    std::string words;
    for (const CommandText& subcommand : command.subcommands)
        words += ' ' + subcommand.name;
    for (const ArgumentText& argument : command.arguments) {
        for (const std::string& name : argument.names)
            words += argument.isOption ? ' ' + name : "";
    }
    return words.substr(1);
}

std::string bashCases(const std::vector<CommandText>& commands) {
    std::string cases;
    for (const CommandText& command : commands) {
        if (command.name.empty())
            continue;
        const std::string names = listOfNames(command);
        cases += "    " + command.name + ")\n        words=(" + bashWords(command) + ")\n";
        if (!names.empty())
            cases += "        mapfile -t names < <(" + names + ")\n";
        if (takesFiles(command))
            cases += "        files=yes\n";
        cases += "        ;;\n";
    }
    return cases;
}

std::string bashScript(const std::vector<CommandText>& commands) {
    std::string names;
    for (const CommandText& command : commands)
        names += command.name.empty() ? "" : command.name + ' ';
    return R"bash(# Completion of qrv for bash.
_qrv() {
    local current=${COMP_WORDS[COMP_CWORD]} command='' index=1 files='' word
    local -a words=() names=()
    while [ "$index" -lt "$COMP_CWORD" ]; do
        case ${COMP_WORDS[index]} in
        -C) index=$((index + 1)) ;;
        -*) ;;
        *) command=${COMP_WORDS[index]}; break ;;
        esac
        index=$((index + 1))
    done
    case $command in
    '') words=()bash" +
           names + bashWords(commands.front()) + R"bash()
        ;;
)bash" + bashCases(commands) +
           R"bash(    esac
    COMPREPLY=()
    # The names come from the repository, and what is offered is typed into the shell.
    for word in "${words[@]}" "${names[@]}"; do
        [[ $word != "$current"* ]] || COMPREPLY+=("$(printf '%q' "$word")")
    done
    if [ -n "$files" ] && [[ $current != -* ]]; then
        compopt -o filenames
        mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$current")
    fi
}
complete -F _qrv qrv
)bash";
}

/// A colon separates a word from what it does.
std::string zshWord(const std::string& word, const std::string& description) {
    std::string escaped;
    for (const char unit : word)
        escaped += unit == ':' ? std::string("\\:") : std::string(1, unit);
    return quoted(escaped + ":" + description);
}

std::string zshCases(const std::vector<CommandText>& commands) {
    std::string cases;
    for (const CommandText& command : commands) {
        if (command.name.empty())
            continue;
        cases += "    " + command.name + ")\n        options=(";
        for (const CommandText& subcommand : command.subcommands)
            cases += "\n            " + zshWord(subcommand.name, subcommand.summary);
        for (const ArgumentText& argument : command.arguments) {
            for (const std::string& name : argument.names) {
                if (argument.isOption)
                    cases += "\n            " + zshWord(name, argument.description);
            }
        }
        cases += ")\n";
        if (const std::string names = listOfNames(command); !names.empty())
            cases += "        names=(${(f)\"$(" + names + ")\"})\n";
        cases += "        ;;\n";
    }
    return cases;
}

std::string zshScript(const std::vector<CommandText>& commands) {
    std::string words;
    for (const CommandText& command : commands) {
        if (!command.name.empty())
            words += "\n        " + zshWord(command.name, command.summary);
    }
    return "#compdef qrv\n# Completion of qrv for zsh.\n_qrv() {\n    local -a commands options "
           "names\n"
           "    commands=(" +
           words + ")\n    if (( CURRENT == 2 )); then\n        _describe command commands\n" +
           "        return\n    fi\n    case $words[2] in\n" + zshCases(commands) +
           "    esac\n    _describe option options\n"
           "    (( ! $#names )) || compadd -a names\n    _files\n}\n_qrv \"$@\"\n";
}

void addFishOptions(const CommandText& command, const std::string& condition, std::string& script) {
    for (const ArgumentText& argument : command.arguments) {
        if (!argument.isOption)
            continue;
        script += "complete -c qrv -n " + quoted(condition);
        for (const std::string& name : argument.names)
            script += name.rfind("--", 0) == 0 ? " -l " + name.substr(2) : " -s " + name.substr(1);
        if (!argument.value.empty())
            script += " -r";
        script += " -d " + quoted(argument.description) + "\n";
    }
}

std::string fishScript(const std::vector<CommandText>& commands) {
    std::string script = "# Completion of qrv for fish.\n";
    for (const CommandText& command : commands) {
        if (command.name.empty()) {
            addFishOptions(command, "__fish_use_subcommand", script);
            continue;
        }
        const std::string isChosen = "__fish_seen_subcommand_from " + command.name;
        script += "complete -c qrv -n __fish_use_subcommand -f -a " + quoted(command.name) +
                  " -d " + quoted(command.summary) + "\n";
        for (const CommandText& subcommand : command.subcommands)
            script += "complete -c qrv -n " + quoted(isChosen) + " -f -a " +
                      quoted(subcommand.name) + " -d " + quoted(subcommand.summary) + "\n";
        if (const std::string names = listOfNames(command); !names.empty())
            script += "complete -c qrv -n " + quoted(isChosen) + " -f -a " +
                      quoted("(" + names + ")") + "\n";
        addFishOptions(command, isChosen, script);
    }
    return script;
}

}  // namespace

std::string completionScript(const std::string& shell, const std::vector<CommandText>& commands) {
    if (shell == "bash")
        return bashScript(commands);
    if (shell == "zsh")
        return zshScript(commands);
    return shell == "fish" ? fishScript(commands) : std::string();
}

}  // namespace qrv::cli
