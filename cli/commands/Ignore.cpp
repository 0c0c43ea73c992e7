#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Message.h>
#include <common/json/Value.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/journal/OpenTree.h>
#include <engine/repository/FindRepository.h>
#include <engine/worktree/IgnoreRules.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/WorkingTree.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
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
    const Expected<common::RootPath> root = findRepository(".", person());
    if (!root)
        return root.error();
    jsonlib::json::Array document;
    OdString text;
    for (const IgnoreRule& rule : IgnoreRules(*root, printMessage).list()) {
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
    const Expected<common::RootPath> root = findRepository(".", person());
    if (!root)
        return root.error();
    const Expected<OdString> path = pathInRepository(*root, arguments.path);
    if (!path)
        return path.error();
    IgnoreRules rules(*root, printMessage);
    const std::optional<IgnoreReason> reason = reasonToIgnore(*path, rules);
    if (arguments.asJson)
        writeJson(documentOf(*path, reason), output);
    else if (reason)
        output.write(plainText(*path, *reason));
    if (reason)
        return {};
    return ErrorMessage{OdString::format(tr(L"No rule ignores '%ls'"), printable(*path))};
}

Expected<void> add(const Arguments& arguments, Output& output) {
    const OdString rule = OdString::fromNarrow(arguments.rule);
    const Expected<std::unique_ptr<WorkingTree>> workingTree =
        openTree(".", Repository::Use::change, person());
    if (!workingTree)
        return workingTree.error();
    const Expected<int> line = addIgnoreRule(rule, (*workingTree)->root());
    if (!line)
        return line.error();
    if (rule[0] != L'^' && rule.find(L'/') >= 0)
        printMessage(
            tr(L"Note: rules are compared with the names of files and folders, so that one "
               L"with a slash matches nothing"));
    if (arguments.asJson)
        writeJson(toJson(*line, rule), output);
    else
        output.write(
            OdString::format(tr(L"Added as line %i: %ls\n"), *line, printable(rule)).toNarrow());
    return (*workingTree)->close();
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
