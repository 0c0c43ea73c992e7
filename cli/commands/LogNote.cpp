#include <CLI/CLI.hpp>
#include <cli/Message.h>
#include <cli/Output.h>
#include <cli/Repository.h>
#include <cli/Translation.h>
#include <cli/commands/Commands.h>
#include <common/repository/ActivityLog.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

namespace qrv_cli {

namespace {

namespace fs = std::filesystem;

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

/// 0 for a missing file.
std::uintmax_t sizeOf(const OdString& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file.toNarrow(), error);
    return error ? 0 : size;
}

/// Looks at the file's size, since the log notices no failure after it is open.
Expected<void> addNote(const std::string& note, Output&) {
    const Expected<common::RootPath> root = findRepository(".");
    if (!root)
        return root.error();
    const OdString log = root->logPath();
    const std::uintmax_t sizeBefore = sizeOf(log);
    if (common::logString(OdString::fromNarrow(note), *root) &&
        sizeOf(log) > sizeBefore + note.size())
        return {};
    return ErrorMessage{
        OdString::format(tr(L"The activity log '%ls' cannot be written"), printable(log))};
}

}  // namespace

Action declareLogNote(CLI::App& parser) {
    const auto note = std::make_shared<std::string>();
    parser.add_option("TEXT", *note, trUtf8(L"The line, which gets the time before it"))
        ->required()
        ->check(refusalOfNote);
    return [note](Output& output) { return addNote(*note, output); };
}

}  // namespace qrv_cli
