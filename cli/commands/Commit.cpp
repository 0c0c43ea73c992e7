#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/CommitText.h>
#include <cli/user/Author.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/journal/OpenTree.h>
#include <engine/operations/CommitInternal.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <memory>
#include <optional>
#include <string>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string message;
    std::optional<std::string> author;
    bool asJson = false;
};

OdString trimmed(const std::string& text) {
    static constexpr const char* blanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string::npos)
        return {};
    return OdString::fromNarrow(text.substr(begin, text.find_last_not_of(blanks) + 1 - begin));
}

void print(const CommitEntry& commit, const OdString& branch, Output& output) {
    output.write(OdString::format(tr(L"Commit %i on %ls: %ls\n"), commit.number, printable(branch),
                                  printable(titleOf(commit)))
                     .toNarrow());
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<OdString> author = authorOf(arguments.author);
    if (!author)
        return author.error();
    const CommitText text = {*author, trimmed(arguments.message)};
    if (text.message.isEmpty())
        return ErrorMessage{tr(L"A commit needs a message that says what was done")};
    const Expected<std::unique_ptr<WorkingTree>> workingTree =
        openTree(".", Repository::Use::change, person(), WorkingTree::Scan::ahead);
    if (!workingTree)
        return workingTree.error();
    const Expected<WorkingChanges> changes = findChanges(**workingTree);
    if (!changes)
        return changes.error();
    const Expected<CommitEntry> commit = commitStaged(**workingTree, *changes, text);
    if (!commit)
        return commit.error();
    if (arguments.asJson)
        writeJson(toJson(*commit), output);
    else
        print(*commit, (*workingTree)->repository().branch(), output);
    // A look is what often comes next.
    (*workingTree)->keepBaseline((*workingTree)->baseline());
    return (*workingTree)->close();
}

}  // namespace

Action declareCommit(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("-m,--message", arguments->message, trUtf8(L"What was done")).required();
    parser.addOption("--author", arguments->author,
                     trUtf8(L"Who did it (default: $QRV_AUTHOR, else user@host)"));
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the commit as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
