#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Message.h>
#include <cli/user/ProjectRegistry.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/Init.h>
#include <engine/repository/ProjectName.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string folder = ".";
    std::optional<std::string> name;
    bool cadIgnores = false;
    bool asJson = false;
};

/// A project that is registered keeps its name there, unless it was just given one.
Expected<void> makeRegistered(const Initialised& project, bool hasNewName) {
    const Expected<std::vector<RegisteredProject>> known = projectsIn(project.root.path());
    if (!known)
        return known.error();
    if (!known->empty() && !hasNewName)
        return {};
    const Expected<RegisteredProject> registered = registerProject(project.root, project.name);
    return registered ? Expected<void>() : registered.error();
}

/// The repository is whole without it.
void noteFailedRegistration(const Expected<void>& registered) {
    if (!registered)
        printMessage(OdString::format(tr(L"Note: your registry of projects stays as it was: %ls"),
                                      registered.error().message));
}

void noteOuterRepository(const OdString& root) {
    printMessage(OdString::format(
        tr(L"Note: the repository '%ls' above it goes on listing its files"), printable(root)));
}

jsonlib::json::Value documentOf(const Initialised& project) {
    jsonlib::json::Object object;
    object[L"root"] = project.root.path().toWide();
    object[L"name"] = project.name.toWide();
    object[L"made"] = project.root.isNew();
    object[L"ignoreRulesAdded"] = static_cast<std::int64_t>(project.addedRules);
    return object;
}

OdString plainText(const Initialised& project, bool hasAskedForRules) {
    const OdString pattern = project.root.isNew() ? tr(L"Made a repository in '%ls'\n")
                                                  : tr(L"'%ls' is already a repository\n");
    OdString text = OdString::format(pattern, printable(project.root.path()));
    if (hasAskedForRules)
        text += OdString::format(tr(L"Ignore rules added: %i\n"), project.addedRules);
    return text;
}

InitRequest toRequest(const Arguments& arguments) {
    InitRequest request = {.name = std::nullopt, .addDraftingRules = arguments.cadIgnores};
    if (arguments.name)
        request.name = OdString::fromNarrow(*arguments.name);
    return request;
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<Initialised> project =
        initialise(arguments.folder, toRequest(arguments), person());
    if (!project)
        return project.error();
    noteFailedRegistration(makeRegistered(*project, arguments.name.has_value()));
    if (project->outerRepository)
        noteOuterRepository(*project->outerRepository);
    if (arguments.asJson)
        writeJson(documentOf(*project), output);
    else
        output.write(plainText(*project, arguments.cadIgnores).toNarrow());
    return {};
}

}  // namespace

Action declareInit(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption(
        "DIR", arguments->folder,
        trUtf8(L"The project's folder, made if it is missing (default: the current one)"));
    parser.addOption("--name", arguments->name, trUtf8(L"The project's name")).check(refusalOfName);
    parser.addFlag("--cad-ignores", arguments->cadIgnores,
                   trUtf8(L"Also ignore autosaves, backups, plot logs, lock files and temporary "
                          L"files"));
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the result as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
