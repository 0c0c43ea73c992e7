#include <CLI/CLI.hpp>
#include <cli/Message.h>
#include <cli/Output.h>
#include <cli/Repository.h>
#include <cli/commands/Commands.h>
#include <common/repository/PropertyProjectName.h>
#include <common/worktree/RepoIgnore.h>
#include <platform/qut/toQt.h>
#include <platform/ut/FileName.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

namespace qrv_cli {

namespace {

namespace fs = std::filesystem;

constexpr int anyKind = 0x1FFF;

struct Arguments {
    std::string folder = ".";
    std::optional<std::string> name;
};

/// For the parser: empty, or what is wrong with a project's name. The name stands in a file of one
/// line, and a person reads it.
std::string refusalOfName(const std::string& name) {
    const OdString text = OdString::fromNarrow(name);
    if (text.isEmpty())
        return "A project's name cannot be empty";
    if (!(printable(text) == text))
        return "A project's name must be one line of plain text";
    return {};
}

Expected<fs::path> absolutePath(const std::string& folder) {
    std::error_code error;
    const fs::path absolute = fs::absolute(folder, error);
    const fs::path path = error ? fs::path() : fs::weakly_canonical(absolute, error);
    if (error)
        return ErrorMessage{OdString::format(L"'%ls' cannot be used: %ls",
                                             printable(toText(folder)),
                                             OdString(error.message().c_str()))};
    if (std::find(path.begin(), path.end(), ".qrv") != path.end())
        return ErrorMessage{OdString::format(L"'%ls' lies in the metadata folder of a repository",
                                             printable(toText(path)))};
    // A folder that is still to be made may end with a separator.
    return path.has_filename() ? path : path.parent_path();
}

Expected<common::RootPath> makeRoot(const fs::path& folder) {
    std::error_code error;
    if (fs::exists(folder, error) && !fs::is_directory(folder, error))
        return ErrorMessage{OdString::format(L"'%ls' is not a folder", printable(toText(folder)))};
    return common::RootPath::get(toText(folder), true);
}

/// An interrupted run may have left any of these out; what is there is not touched.
Expected<void> makeMissingFiles(const common::RootPath& root) {
    const Host host;
    const bool hadState = ut::FileName(root.statePath()).exists(anyKind);
    common::Cache::create(root, host);
    if (!host.lastWrite())
        return host.lastWrite();
    if (!hadState && !root.isNew())
        printMessage(L"Note: there was no state file; a new one names the branch 'master'");
    return common::RepoIgnore::write(
        common::RepoIgnore::explanation(false) + common::RepoIgnore::defaultIgnore(), root);
}

/// Looks at the file's size, since the writing of the name notices no failure after the file is
/// open.
Expected<void> setName(const std::string& name, const common::RootPath& root) {
    const OdString folder = root.propertiesPath();
    const fs::path file = fs::path(folder.toNarrow()) / "project_name";
    std::error_code error;
    if (common::PropertyProjectName(root).setName(qut::toQt(OdString::fromNarrow(name))) &&
        fs::file_size(file, error) == name.size() + 1)
        return {};
    return ErrorMessage{OdString::format(
        L"The project's name cannot be written to the folder '%ls'", printable(folder))};
}

void noteOuterRepository(const fs::path& folder) {
    if (const auto outer = enclosingRepository(folder.parent_path()))
        printMessage(
            OdString::format(L"Note: the repository '%ls' above it goes on listing its files",
                             printable(outer->path())));
}

Expected<void> initialise(const Arguments& arguments, Output& output) {
    const Expected<fs::path> folder = absolutePath(arguments.folder);
    if (!folder)
        return folder.error();
    const Expected<common::RootPath> root = makeRoot(*folder);
    if (!root)
        return root.error();
    if (Expected<void> made = makeMissingFiles(*root); !made)
        return made;
    if (arguments.name)
        if (Expected<void> named = setName(*arguments.name, *root); !named)
            return named;

    if (root->isNew())
        noteOuterRepository(*folder);
    const wchar_t* const pattern =
        root->isNew() ? L"Made a repository in '%ls'\n" : L"'%ls' is already a repository\n";
    output.write(OdString::format(pattern, printable(root->path())).toNarrow());
    return {};
}

}  // namespace

Action declareInit(CLI::App& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.add_option("DIR", arguments->folder,
                      "The project's folder, made if it is missing (default: the current one)");
    parser.add_option("--name", arguments->name, "The project's name")->check(refusalOfName);
    return [arguments](Output& output) { return initialise(*arguments, output); };
}

}  // namespace qrv_cli
