#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/Unstage.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/worktree/FileWord.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/Staging.h>

namespace qrv {

namespace {

ErrorMessage whyNone(const std::string& word, const WorkingTree& workingTree) {
    const Expected<OdString> path = pathInRepository(workingTree.root(), word);
    return path ? ErrorMessage{OdString::format(tr(L"'%ls' is not staged"), printable(*path))}
                : path.error();
}

Expected<std::vector<OdString>> chosenPaths(const UnstageRequest& request,
                                            const WorkingTree& workingTree) {
    if (request.all)
        return std::vector<OdString>{OdString()};
    std::vector<OdString> staged;
    for (const auto& file : workingTree.repository().state().stagedFiles)
        staged.push_back(file.path);
    std::vector<OdString> chosen;
    for (const std::string& word : request.paths) {
        const Expected<std::vector<OdString>> found = filesOfWord(workingTree.root(), word, staged);
        if (!found)
            return found.error();
        if (found->empty())
            return whyNone(word, workingTree);
        chosen.insert(chosen.end(), found->begin(), found->end());
    }
    return chosen;
}

}  // namespace

Expected<std::vector<common::StagedFile>> unstage(const std::string& folder,
                                                  const UnstageRequest& request, Caller& caller) {
    using Files = Expected<std::vector<common::StagedFile>>;
    const auto action = [&request](WorkingTree& workingTree) -> Files {
        const Expected<std::vector<OdString>> chosen = chosenPaths(request, workingTree);
        if (!chosen)
            return chosen.error();
        return unstage(*chosen, workingTree.repository().cache());
    };
    return withRepository(folder, Repository::Use::change, caller, action);
}

}  // namespace qrv
