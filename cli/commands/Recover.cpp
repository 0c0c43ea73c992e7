#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <common/json/Value.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/Plan.h>
#include <engine/journal/Interruption.h>
#include <engine/journal/OpenTree.h>
#include <engine/maintenance/HistoryRebuild.h>
#include <engine/repository/LogEntry.h>
#include <engine/worktree/WorkingTree.h>

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

bool finishes(const Plan& plan) {
    return plan.recovery == Plan::Recovery::finish;
}

const wchar_t* outcomeOf(const Plan& plan, const Arguments& arguments) {
    if (arguments.onlyLook)
        return finishes(plan) ? L"to-finish" : L"to-take-back";
    if (arguments.forgets)
        return L"forgotten";
    return finishes(plan) ? L"finished" : L"taken-back";
}

jsonlib::json::Value documentOf(const std::optional<Plan>& plan, const Arguments& arguments) {
    jsonlib::json::Array files;
    jsonlib::json::Object object;
    object[L"interrupted"] =
        plan ? jsonlib::json::Value(plan->title.toWide()) : jsonlib::json::Value();
    object[L"outcome"] = plan ? outcomeOf(*plan, arguments) : L"nothing";
    if (plan) {
        for (const PlannedFile& step : plan->files)
            files.emplace_back(step.path.text().toWide());
    }
    object[L"files"] = std::move(files);
    return object;
}

OdString patternOf(const Plan& plan, const Arguments& arguments) {
    if (arguments.onlyLook)
        return finishes(plan) ? tr(L"'%ls' is to be finished; files: %i\n")
                              : tr(L"'%ls' is to be taken back; files: %i\n");
    if (arguments.forgets)
        return tr(L"'%ls' is forgotten, and its files are left as they are: %i\n");
    return finishes(plan) ? tr(L"'%ls' is finished; files: %i\n")
                          : tr(L"'%ls' is taken back; files: %i\n");
}

std::string plainText(const std::optional<Plan>& plan, const Arguments& arguments) {
    if (!plan)
        return trUtf8(L"Nothing was interrupted\n");
    OdString text =
        OdString::format(patternOf(*plan, arguments), printable(plan->title), plan->files.size());
    if (arguments.onlyLook) {
        for (const PlannedFile& step : plan->files)
            text += L"  " + printable(step.path) + L"\n";
    }
    return text.toNarrow();
}

Expected<void> settle(WorkingTree& workingTree, const Plan& plan, const Arguments& arguments) {
    if (arguments.onlyLook)
        return {};
    if (arguments.forgets)
        forgetInterruption(workingTree);
    else if (Expected<void> settled = settleInterruption(workingTree); !settled)
        return settled;
    logEvent(OdString::format(L"recover: %ls %ls", plan.title, outcomeOf(plan, arguments)),
             workingTree.root(), workingTree.folder(), person());
    return workingTree.close();
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
    // What was interrupted is settled below.
    const Expected<std::unique_ptr<WorkingTree>> workingTree =
        arguments.onlyLook ? openTree(".", Repository::Use::look, person())
                           : WorkingTree::open(".", Repository::Use::change, person());
    if (!workingTree)
        return workingTree.error();
    const std::optional<Plan> plan = notedPlan((*workingTree)->repository().history());
    if (plan) {
        if (Expected<void> settled = settle(**workingTree, *plan, arguments); !settled)
            return settled;
    }
    if (arguments.asJson)
        writeJson(documentOf(plan, arguments), output);
    else
        output.write(plainText(plan, arguments));
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
