#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <common/json/Value.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/RebuildHistory.h>
#include <engine/operations/Recover.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace qrv::cli {

namespace {

struct Arguments {
    bool onlyLook = false;
    bool forgets = false;
    bool rebuilds = false;
    bool asJson = false;
};

const wchar_t* outcomeOf(const InterruptedOperation& operation, const Arguments& arguments) {
    if (arguments.onlyLook)
        return operation.isFinished ? L"to-finish" : L"to-take-back";
    if (arguments.forgets)
        return L"forgotten";
    return operation.isFinished ? L"finished" : L"taken-back";
}

jsonlib::json::Value documentOf(const std::optional<InterruptedOperation>& operation,
                                const Arguments& arguments) {
    jsonlib::json::Array files;
    jsonlib::json::Object object;
    object[L"interrupted"] =
        operation ? jsonlib::json::Value(operation->title.toWide()) : jsonlib::json::Value();
    object[L"outcome"] = operation ? outcomeOf(*operation, arguments) : L"nothing";
    if (operation) {
        for (const OdString& path : operation->files)
            files.emplace_back(path.toWide());
    }
    object[L"files"] = std::move(files);
    return object;
}

OdString patternOf(const InterruptedOperation& operation, const Arguments& arguments) {
    if (arguments.onlyLook)
        return operation.isFinished ? tr(L"'%ls' is to be finished; files: %i\n")
                                    : tr(L"'%ls' is to be taken back; files: %i\n");
    if (arguments.forgets)
        return tr(L"'%ls' is forgotten, and its files are left as they are: %i\n");
    return operation.isFinished ? tr(L"'%ls' is finished; files: %i\n")
                                : tr(L"'%ls' is taken back; files: %i\n");
}

std::string plainText(const std::optional<InterruptedOperation>& operation,
                      const Arguments& arguments) {
    if (!operation)
        return trUtf8(L"Nothing was interrupted\n");
    OdString text = OdString::format(patternOf(*operation, arguments), printable(operation->title),
                                     operation->files.size());
    if (arguments.onlyLook) {
        for (const OdString& path : operation->files)
            text += L"  " + printable(path) + L"\n";
    }
    return text.toNarrow();
}

jsonlib::json::Value documentOf(const Rebuilt& rebuilt) {
    jsonlib::json::Array problems;
    for (const OdString& problem : rebuilt.problems)
        problems.emplace_back(problem.toWide());
    jsonlib::json::Object object;
    object[L"commits"] = rebuilt.commits;
    object[L"references"] = rebuilt.references;
    object[L"problems"] = std::move(problems);
    object[L"setAside"] = rebuilt.setAside.isEmpty()
                              ? jsonlib::json::Value()
                              : jsonlib::json::Value(rebuilt.setAside.toWide());
    return object;
}

std::string plainText(const Rebuilt& rebuilt) {
    OdString text = OdString::format(tr(L"Commits made anew: %i\n"), rebuilt.commits);
    text += OdString::format(tr(L"Branches and tags made anew: %i\n"), rebuilt.references);
    if (!rebuilt.setAside.isEmpty())
        text += OdString::format(tr(L"The damaged history is kept as '%ls'\n"),
                                 printable(rebuilt.setAside));
    for (const OdString& problem : rebuilt.problems)
        text += L"  " + printable(problem) + L"\n";
    return text.toNarrow();
}

Expected<void> rebuild(const Arguments& arguments, Output& output) {
    const Expected<Rebuilt> rebuilt = rebuildHistory(".", person());
    if (!rebuilt)
        return rebuilt.error();
    if (arguments.asJson)
        writeJson(documentOf(*rebuilt), output);
    else
        output.write(plainText(*rebuilt));
    if (rebuilt->problems.empty())
        return {};
    return ErrorMessage{OdString::format(tr(L"Not all could be made anew; problems: %i"),
                                         rebuilt->problems.size())};
}

Expected<void> run(const Arguments& arguments, Output& output) {
    if (arguments.rebuilds)
        return rebuild(arguments, output);
    const Recover what = arguments.onlyLook  ? Recover::look
                         : arguments.forgets ? Recover::forget
                                             : Recover::settle;
    const Expected<std::optional<InterruptedOperation>> operation = recover(".", what, person());
    if (!operation)
        return operation.error();
    if (arguments.asJson)
        writeJson(documentOf(*operation, arguments), output);
    else
        output.write(plainText(*operation, arguments));
    return {};
}

}  // namespace

Action declareRecover(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const Argument look = parser.addFlag("--dry-run,-n", arguments->onlyLook,
                                         trUtf8(L"Only tell what would be done"));
    const Argument forget =
        parser
            .addFlag("--forget", arguments->forgets,
                     trUtf8(L"Leave the files as they are, and forget what was interrupted"))
            .excludes(look);
    parser
        .addFlag("--history", arguments->rebuilds,
                 trUtf8(L"Make a lost, older or damaged history anew from the records beside it"))
        .excludes(look)
        .excludes(forget);
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print what was done as a JSON object"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
