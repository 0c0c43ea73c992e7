#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/user/ProjectRegistry.h>
#include <common/json/Value.h>
#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/ProjectName.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace qrv::cli {

namespace {

namespace fs = std::filesystem;
namespace json = jsonlib::json;
using Projects = std::vector<RegisteredProject>;

struct Arguments {
    std::string folder = ".";
    std::optional<std::string> name;
    bool asJson = false;
};

json::Object toJson(const RegisteredProject& project) {
    json::Object object;
    object[L"name"] = project.name.toWide();
    object[L"path"] = project.path.toWide();
    object[L"uid"] = project.uid.toWide();
    return object;
}

json::Array toJson(const Projects& projects) {
    json::Array array;
    for (const RegisteredProject& project : projects)
        array.emplace_back(toJson(project));
    return array;
}

/// The columns of a terminal, but for wide and combining characters.
int widthOf(const OdString& text) {
    int width = 0;
    for (int index = 0; index < text.getLength(); ++index)
        width += text[index] < 0xDC00 || text[index] > 0xDFFF ? 1 : 0;
    return width;
}

OdString padded(const OdString& text, int width) {
    const int missing = std::max(0, width - widthOf(text));
    return text + OdString(std::wstring(static_cast<std::size_t>(missing), L' '));
}

/// A line each: name, path and, where there is one, the uid.
OdString table(const Projects& projects) {
    int nameWidth = 0;
    int pathWidth = 0;
    for (const RegisteredProject& project : projects) {
        nameWidth = std::max(nameWidth, widthOf(printable(project.name)));
        pathWidth = std::max(pathWidth, widthOf(printable(project.path)));
    }
    OdString lines;
    for (const RegisteredProject& project : projects) {
        const OdString path = printable(project.path);
        lines += padded(printable(project.name), nameWidth) + L"  ";
        lines +=
            project.uid.isEmpty() ? path : padded(path, pathWidth) + L"  " + printable(project.uid);
        lines += L"\n";
    }
    return lines;
}

Expected<void> listProjects(const Arguments& arguments, Output& output) {
    const Expected<Projects> projects = registeredProjects();
    if (!projects)
        return projects.error();
    if (arguments.asJson)
        writeJson(toJson(*projects), output);
    else
        output.write(table(*projects).toNarrow());
    return {};
}

Expected<void> addProject(const Arguments& arguments, Output& output) {
    const Expected<common::RootPath> root = findRepository(arguments.folder, person());
    if (!root)
        return root.error();
    const Expected<RegisteredProject> project = registerProject(
        *root, arguments.name ? OdString::fromNarrow(*arguments.name) : displayName(*root));
    if (!project)
        return project.error();
    if (arguments.asJson)
        writeJson(toJson(*project), output);
    else
        output.write(OdString::format(tr(L"Registered '%ls' as '%ls'\n"), printable(project->path),
                                      printable(project->name))
                         .toNarrow());
    return {};
}

/// What a person may mean by the folder: the path as it was given, that without links and, since
/// the other commands take any folder in a repository, the repository that holds it.
Expected<std::vector<OdString>> meanings(const std::string& folder) {
    std::error_code error;
    const fs::path given = fs::absolute(folder, error);
    if (error)
        return systemFailure(tr(L"'%ls' cannot be used: %ls"), toText(folder), error);
    std::vector<OdString> paths = {toText(given)};
    if (const fs::path path = fs::weakly_canonical(given, error); !error)
        paths.push_back(toText(path));
    if (const Expected<common::RootPath> root = findRepository(folder, person()))
        paths.push_back(root->path());
    return paths;
}

Expected<void> removeProject(const Arguments& arguments, Output& output) {
    const Expected<std::vector<OdString>> paths = meanings(arguments.folder);
    if (!paths)
        return paths.error();
    Expected<Projects> removed = Projects();
    for (const OdString& path : *paths)
        if (removed && removed->empty())
            removed = unregisterProjects(path);
    if (!removed)
        return removed.error();
    if (removed->empty())
        return ErrorMessage{OdString::format(tr(L"'%ls' is not in your registry of projects"),
                                             printable(paths->front()))};
    if (arguments.asJson)
        writeJson(toJson(*removed), output);
    else
        for (const RegisteredProject& project : *removed)
            output.write(OdString::format(tr(L"Removed '%ls' from your registry of projects\n"),
                                          printable(project.path))
                             .toNarrow());
    return {};
}

}  // namespace

Action declareProjects(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const ArgumentParser list =
        parser.addSubcommand("list", trUtf8(L"List the projects (the default)"));
    const ArgumentParser add =
        parser.addSubcommand("add", trUtf8(L"Register the repository that holds a folder"));
    const ArgumentParser remove =
        parser.addSubcommand("remove", trUtf8(L"Remove a folder, which need not exist any more"));

    add.addOption("DIR", arguments->folder,
                  trUtf8(L"A folder in the repository (default: the current one)"));
    add.addOption("--name", arguments->name,
                  trUtf8(L"The name to list (default: the project's, or else its folder's)"))
        .check(refusalOfName);
    remove.addOption("DIR", arguments->folder,
                     trUtf8(L"The project's folder or one in it (default: the current one)"));
    for (const ArgumentParser& command : {parser, list, add, remove})
        command.addFlag("--json", arguments->asJson, trUtf8(L"Print the projects as JSON"));

    return [arguments, add, remove](Output& output) {
        if (add.isChosen())
            return addProject(*arguments, output);
        return remove.isChosen() ? removeProject(*arguments, output)
                                 : listProjects(*arguments, output);
    };
}

}  // namespace qrv::cli
