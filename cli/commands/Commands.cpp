#include <cli/commands/Commands.h>
#include <engine/base/Translation.h>

namespace qrv::cli {

std::span<const Command> commands() {
    static constexpr Command all[] = {
        {"init", translatable(L"Make a repository in a folder, or complete the one that is there"),
         declareInit},
        {"files", translatable(L"List the files that the ignore rules leave"), declareFiles},
        {"status", translatable(L"Show the branch, what has changed and what is staged"),
         declareStatus},
        {"add", translatable(L"Stage changed files for the next commit"), declareAdd},
        {"unstage", translatable(L"Take files off the stage; they stay as they are"),
         declareUnstage},
        {"commit", translatable(L"Keep the staged files as a commit"), declareCommit},
        {"restore", translatable(L"Bring back files as they were in a commit"), declareRestore},
        {"switch", translatable(L"Go to another branch, or begin one"), declareSwitch},
        {"merge", translatable(L"Merge another branch into the current one"), declareMerge},
        {"resolve", translatable(L"Settle a conflict of a merge"), declareResolve},
        {"ignore", translatable(L"List, test or add the rules for files that are left out"),
         declareIgnore},
        {"verify", translatable(L"Check that everything that was kept is there and whole"),
         declareVerify},
        {"recover", translatable(L"Finish or take back what was interrupted, or mend the history"),
         declareRecover},
        {"gc", translatable(L"Make the repository smaller; nothing that a commit names is lost"),
         declareGc},
        {"log", translatable(L"List the commits, newest first"), declareLog},
        {"show", translatable(L"Show a commit and what it changed"), declareShow},
        {"diff", translatable(L"Compare the working files and commits"), declareDiff},
        {"branch", translatable(L"List, make or delete branches"), declareBranch},
        {"tag", translatable(L"List, make or delete tags"), declareTag},
        {"state", translatable(L"Print the repository's state as JSON"), declareState},
        {"name", translatable(L"Print or set the project's name"), declareName},
        {"projects", translatable(L"List, add or remove the projects in your registry"),
         declareProjects},
        {"config", translatable(L"Print or change your settings"), declareConfig},
        {"log-note", translatable(L"Write a line into the activity log"), declareLogNote},
        {"locate", translatable(L"Tell what a storage URL names and where that is kept"),
         declareLocate},
        {"convert", translatable(L"Read a record of the server and print it as JSON"),
         declareConvert},
        {"completion", translatable(L"Print the script that completes commands in a shell"),
         declareCompletion},
        {"manual", translatable(L"Print a manual page in the form of man"), declareManual},
    };
    return all;
}

}  // namespace qrv::cli
