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
#include <engine/repository/FindRepository.h>
#include <engine/repository/MetadataCheck.h>
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

Expected<void> renameInRegistry(const common::RootPath& root) {
    const Expected<std::vector<RegisteredProject>> known = projectsIn(root.path());
    if (!known)
        return known.error();
    if (known->empty())
        return {};
    const Expected<RegisteredProject> project = registerProject(root, displayName(root));
    return project ? Expected<void>() : project.error();
}

/// The name is the project's own, so that a registry out of reach is no reason to fail.
Expected<void> setName(const std::string& newName, const RepositoryPlace& repository) {
    if (Expected<void> named =
            setProjectName(newName, repository.root, repository.folder, person());
        !named)
        return named;
    if (const Expected<void> renamed = renameInRegistry(repository.root); !renamed)
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
    const Expected<RepositoryPlace> repository = openRepository(".", person());
    if (!repository)
        return repository.error();
    const common::RootPath& root = repository->root;
    if (arguments.newName)
        if (Expected<void> named = setName(*arguments.newName, *repository); !named)
            return named;
    const OdString name = projectName(root);
    // The library read it by its path.
    if (Expected<void> checked = checkMetadata(repository->folder, root.path()); !checked)
        return checked;
    if (name.isEmpty())
        return ErrorMessage{
            OdString::format(tr(L"The project '%ls' has no name (qrv name NEW gives it one)"),
                             printable(root.path()))};
    if (arguments.asJson)
        writeJson(toJson(name, root.path()), output);
    else
        output.write(printable(name).toNarrow() + "\n");
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
