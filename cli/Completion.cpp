#include <cli/Completion.h>

#include <algorithm>

namespace qrv_cli {

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

std::string optionWords(const CommandText& command) {
    std::string words;
    for (const ArgumentText& argument : command.arguments) {
        if (!argument.isOption)
            continue;
        for (const std::string& name : argument.names)
            words += (words.empty() ? "" : " ") + name;
    }
    return words;
}

std::string commandWords(const std::vector<CommandText>& commands) {
    std::string words;
    for (const CommandText& command : commands) {
        if (!command.name.empty())
            words += (words.empty() ? "" : " ") + command.name;
    }
    return words;
}

bool wantsReference(const CommandText& command) {
    return std::any_of(command.arguments.begin(), command.arguments.end(),
                       [](const ArgumentText& argument) {
                           const std::string& name = argument.names.front();
                           return !argument.isOption && (name == "BRANCH" || name == "COMMIT");
                       });
}

std::string bashCases(const std::vector<CommandText>& commands) {
    std::string cases;
    for (const CommandText& command : commands) {
        if (command.name.empty())
            continue;
        cases += "    " + command.name + ") options=" + quoted(optionWords(command)) +
                 "; names=" + (wantsReference(command) ? "references" : "files") + " ;;\n";
    }
    return cases;
}

std::string bashScript(const std::vector<CommandText>& commands) {
    return R"bash(# Completion of qrv for bash.
_qrv() {
    local current=${COMP_WORDS[COMP_CWORD]} command='' index=1 options='' names=''
    while [ "$index" -lt "$COMP_CWORD" ]; do
        case ${COMP_WORDS[index]} in
        -C) index=$((index + 1)) ;;
        -*) ;;
        *) command=${COMP_WORDS[index]}; break ;;
        esac
        index=$((index + 1))
    done
    case $command in
    '') options=)bash" +
           quoted(commandWords(commands) + " " + optionWords(commands.front())) +
           R"bash(; names=none ;;
)bash" + bashCases(commands) +
           R"bash(    esac
    [ "$names" != references ] || options="$options $(qrv branch 2>/dev/null | cut -c3- | cut -d" " -f1)"
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    if [ "$names" = files ] && [[ $current != -* ]]; then
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
        for (const ArgumentText& argument : command.arguments) {
            for (const std::string& name : argument.names) {
                if (argument.isOption)
                    cases += "\n            " + zshWord(name, argument.description);
            }
        }
        cases += ")\n";
        if (wantsReference(command))
            cases +=
                "        names=(${(f)\"$(qrv branch 2>/dev/null | cut -c3- | cut -d\' \' "
                "-f1)\"})\n";
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
           "    (( ! $#names )) || _describe name names\n    _files\n}\n_qrv \"$@\"\n";
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
        if (wantsReference(command))
            script += "complete -c qrv -n " + quoted(isChosen) +
                      " -f -a '(qrv branch 2>/dev/null | cut -c3- | cut -d\" \" -f1)'\n";
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

}  // namespace qrv_cli
