#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/PersonAtTerminal.h>
#include <engine/base/Translation.h>
#include <engine/operations/LogNote.h>
#include <engine/repository/LogEntry.h>

#include <memory>
#include <string>

namespace qrv::cli {

Action declareLogNote(const ArgumentParser& parser) {
    const auto note = std::make_shared<std::string>();
    parser.addOption("TEXT", *note, trUtf8(L"The line, which gets the time before it"))
        .required()
        .check(refusalOfNote);
    return [note](Output&) { return addLogNote(".", OdString::fromNarrow(*note), person()); };
}

}  // namespace qrv::cli
