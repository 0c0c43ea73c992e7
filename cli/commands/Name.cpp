#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Message.h>
#include <cli/user/ProjectRegistry.h>
#include <common/json/Value.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/Name.h>
#include <engine/repository/ProjectName.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qrv::cli {

namespace {

struct Arguments {
    std::optional<std::string> newName;
    bool asJson = false;
};

Expected<void> renameInRegistry(const NamedProject& project) {
    const Expected<std::vector<RegisteredProject>> known = projectsIn(project.root.path());
    if (!known)
        return known.error();
    if (known->empty())
        return {};
    const Expected<RegisteredProject> renamed = registerProject(project.root, project.displayName);
    return renamed ? Expected<void>() : renamed.error();
}

/// The name is the project's own, so that a registry out of reach is no reason to fail.
Expected<void> setName(const std::string& newName) {
    const Expected<NamedProject> project =
        renameProject(".", OdString::fromNarrow(newName), person());
    if (!project)
        return project.error();
    if (const Expected<void> renamed = renameInRegistry(*project); !renamed)
        printMessage(OdString::format(tr(L"Note: your registry of projects stays as it was: %ls"),
                                      renamed.error().message));
    return {};
}

jsonlib::json::Value toJson(const OdString& name, const OdString& root) {
    jsonlib::json::Object object;
    object[L"name"] = name.toWide();
    object[L"root"] = root.toWide();
    return object;
}

Expected<void> showOrSetName(const Arguments& arguments, Output& output) {
    if (arguments.newName)
        if (Expected<void> named = setName(*arguments.newName); !named)
            return named;
    const Expected<NamedProject> project = projectIn(".", person());
    if (!project)
        return project.error();
    if (project->name.isEmpty())
        return ErrorMessage{
            OdString::format(tr(L"The project '%ls' has no name (qrv name NEW gives it one)"),
                             printable(project->root.path()))};
    if (arguments.asJson)
        writeJson(toJson(project->name, project->root.path()), output);
    else
        output.write(printable(project->name).toNarrow() + "\n");
    return {};
}

}  // namespace

Action declareName(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser
        .addOption("NEW", arguments->newName,
                   trUtf8(L"The name that the project gets (default: the name stays)"))
        .check(refusalOfName);
    parser.addFlag("--json", arguments->asJson,
                   trUtf8(L"Print the name and the project's folder as a JSON object"));
    return [arguments](Output& output) { return showOrSetName(*arguments, output); };
}

}  // namespace qrv::cli
