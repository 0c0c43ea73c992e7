#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/PersonAtTerminal.h>
#include <common/json/Reader.h>
#include <common/json/Value.h>
#include <engine/base/Translation.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/OpenState.h>
#include <platform/ut/ReadEntireFile.h>

#include <memory>
#include <string>

namespace qrv::cli {

namespace {

/// Prints the file's document in the form in which the library writes one, and not the file's
/// bytes: so it is valid UTF-8 and in one layout also where somebody edited the file.
Expected<void> printState(const std::string& folder, Output& output) {
    const Expected<RepositoryPlace> repository = openRepository(folder, person());
    if (!repository)
        return repository.error();
    const common::RootPath& root = repository->root;
    const Host host;
    // The library's reader decides whether the document is a state at all.
    const Expected<std::shared_ptr<common::Cache>> state =
        openState(root, repository->folder, host);
    if (!state)
        return state.error();

    const OdString text = ut::readEntireFile(root.statePath());
    jsonlib::json::Value document;
    if (!jsonlib::json::read(text.c_str(), text.c_str() + text.getLength(), document))
        return ErrorMessage{tr(L"The state file was changed while it was read")};
    writeJson(document, output);
    return {};
}

}  // namespace

Action declareState(const ArgumentParser& parser) {
    const auto folder = std::make_shared<std::string>(".");
    parser.addOption("DIR", *folder,
                     trUtf8(L"A folder in the repository (default: the current one)"));
    return [folder](Output& output) { return printState(*folder, output); };
}

}  // namespace qrv::cli
