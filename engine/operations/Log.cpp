#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitName.h>
#include <engine/history/PathHistory.h>
#include <engine/operations/Log.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/worktree/PathArgument.h>

#include <cstdint>
#include <utility>

namespace qrv {

namespace {

using Commits = Expected<std::vector<CommitEntry>>;

Commits commitsOfPath(Repository& repository, std::vector<CommitEntry> commits,
                      const std::string& word) {
    const Expected<OdString> path = pathInRepository(repository.root(), word);
    if (!path)
        return path.error();
    std::vector<CommitEntry> changing =
        commitsThatChanged(repository.history(), std::move(commits), *path);
    if (changing.empty())
        return ErrorMessage{OdString::format(tr(L"No commit has changed '%ls'"),
                                             printable(OdString::fromNarrow(word)))};
    return changing;
}

Commits findCommits(Repository& repository, const LogRequest& request) {
    OdString start = repository.headCommit();
    if (request.commit) {
        Expected<OdString> named =
            findCommit(repository.history(), *request.commit, repository.branch());
        if (!named)
            return named.error();
        start = std::move(*named);
    }
    const bool takesAll = request.path || !request.count;
    Commits commits = repository.history().ancestors(start, takesAll ? SIZE_MAX : *request.count);
    if (request.path && !commits->empty())
        commits = commitsOfPath(repository, std::move(*commits), *request.path);
    if (commits && request.count && *request.count < commits->size())
        commits->resize(*request.count);
    return commits;
}

}  // namespace

Expected<Log> log(const std::string& folder, const LogRequest& request, Caller& caller) {
    const auto action = [&request](WorkingTree& workingTree) -> Expected<Log> {
        Repository& repository = workingTree.repository();
        Commits commits = findCommits(repository, request);
        if (!commits)
            return commits.error();
        return Log{.commits = std::move(*commits),
                   .references = repository.history().references(),
                   .branch = repository.branch()};
    };
    return withRepository(folder, Repository::Use::look, caller, action);
}

}  // namespace qrv
