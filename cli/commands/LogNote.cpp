#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/LogEntry.h>
#include <engine/repository/SharedMode.h>

#include <memory>
#include <string>

namespace qrv::cli {

namespace {

/// For the parser: empty, or what is wrong with the note. It is one line among others: one with a
/// line break could pass for two, and for one that the library wrote.
std::string refusalOfNote(const std::string& note) {
    const OdString text = OdString::fromNarrow(note);
    if (text.isEmpty())
        return trUtf8(L"A note cannot be empty");
    if (!(printable(text) == text))
        return trUtf8(L"A note must be one line of plain text");
    return {};
}

Expected<void> addNote(const std::string& note, Output&) {
    const Expected<RepositoryPlace> repository = openRepository(".", person());
    if (!repository)
        return repository.error();
    const SharedMode shared(repository->folder, person());
    return addToLog(OdString::fromNarrow(note), repository->root, repository->folder);
}

}  // namespace

Action declareLogNote(const ArgumentParser& parser) {
    const auto note = std::make_shared<std::string>();
    parser.addOption("TEXT", *note, trUtf8(L"The line, which gets the time before it"))
        .required()
        .check(refusalOfNote);
    return [note](Output& output) { return addNote(*note, output); };
}

}  // namespace qrv::cli
