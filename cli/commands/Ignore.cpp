#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <common/json/Value.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/Ignore.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string path;
    std::string rule;
    bool asJson = false;
};

jsonlib::json::Object toJson(int line, const OdString& rule) {
    jsonlib::json::Object object;
    object[L"line"] = line;
    object[L"rule"] = rule.toWide();
    return object;
}

Expected<void> list(const Arguments& arguments, Output& output) {
    const Expected<std::vector<IgnoreRule>> rules = listIgnoreRules(".", person());
    if (!rules)
        return rules.error();
    jsonlib::json::Array document;
    OdString text;
    for (const IgnoreRule& rule : *rules) {
        document.emplace_back(toJson(rule.line, rule.text));
        text += OdString::format(L"%i: %ls\n", rule.line, printable(rule.text));
    }
    if (arguments.asJson)
        writeJson(document, output);
    else
        output.write(text.toNarrow());
    return {};
}

jsonlib::json::Value documentOf(const OdString& path, const std::optional<IgnoreReason>& reason) {
    jsonlib::json::Object object;
    object[L"path"] = path.toWide();
    object[L"ignored"] = reason.has_value();
    if (reason)
        object[L"matched"] = reason->path.toWide();
    if (reason && reason->line > 0) {
        object[L"line"] = reason->line;
        object[L"rule"] = reason->rule.toWide();
    }
    return object;
}

std::string plainText(const OdString& path, const IgnoreReason& reason) {
    const OdString matched = printable(reason.path);
    OdString text;
    if (reason.line == 0)
        text = OdString::format(tr(L"'%ls' is the metadata folder, which is never versioned\n"),
                                matched);
    else if (reason.path == path)
        text = OdString::format(tr(L"'%ls' is ignored by line %i: %ls\n"), matched, reason.line,
                                printable(reason.rule));
    else
        text = OdString::format(tr(L"The folder '%ls' is ignored by line %i: %ls\n"), matched,
                                reason.line, printable(reason.rule));
    return text.toNarrow();
}

Expected<void> check(const Arguments& arguments, Output& output) {
    const Expected<IgnoreAnswer> answer = checkIgnored(".", arguments.path, person());
    if (!answer)
        return answer.error();
    if (arguments.asJson)
        writeJson(documentOf(answer->path, answer->reason), output);
    else if (answer->reason)
        output.write(plainText(answer->path, *answer->reason));
    if (answer->reason)
        return {};
    return ErrorMessage{OdString::format(tr(L"No rule ignores '%ls'"), printable(answer->path))};
}

Expected<void> add(const Arguments& arguments, Output& output) {
    const Expected<IgnoreRule> added =
        addIgnoreRule(".", OdString::fromNarrow(arguments.rule), person());
    if (!added)
        return added.error();
    if (arguments.asJson)
        writeJson(toJson(added->line, added->text), output);
    else
        output.write(
            OdString::format(tr(L"Added as line %i: %ls\n"), added->line, printable(added->text))
                .toNarrow());
    return {};
}

}  // namespace

Action declareIgnore(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const ArgumentParser listing =
        parser.addSubcommand("list", trUtf8(L"List the rules in force (the default)"));
    const ArgumentParser checking = parser.addSubcommand(
        "check", trUtf8(L"Tell which rule ignores a path; fails when none does"));
    const ArgumentParser adding =
        parser.addSubcommand("add", trUtf8(L"Add a rule to the ignore file"));

    checking.addOption("PATH", arguments->path, trUtf8(L"A file or folder, which need not exist"))
        .required();
    adding
        .addOption("RULE", arguments->rule,
                   trUtf8(L"A glob such as '*.bak', or an expression that begins with ^"))
        .required();
    for (const ArgumentParser& command : {parser, listing, checking, adding})
        command.addFlag("--json", arguments->asJson, trUtf8(L"Print the answer as JSON"));

    return [arguments, checking, adding](Output& output) {
        if (adding.isChosen())
            return add(*arguments, output);
        return checking.isChosen() ? check(*arguments, output) : list(*arguments, output);
    };
}

}  // namespace qrv::cli
