#include <common/worktree/VisitRepoFiles.h>
#include <engine/base/WithoutExceptions.h>
#include <engine/operations/Files.h>
#include <engine/paths/Layout.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/MetadataCheck.h>
#include <engine/worktree/IgnoreRules.h>

#include <utility>

namespace qrv {

Expected<ListedFiles> listFiles(const std::string& folder, Caller& caller) {
    return withoutExceptions([&]() -> Expected<ListedFiles> {
        const Expected<RepositoryPlace> repository = openRepository(folder, caller);
        if (!repository)
            return repository.error();
        IgnoreRules rules(repository->root, [&](const OdString& text) { caller.note(text); });
        ListedFiles listed;
        const Expected<void> visited = common::visitRepoFiles(
            repository->root, [&](const OdString& name) { return rules.match(name) != nullptr; },
            [&](OdString path) { listed.files.push_back(std::move(path)); },
            [&](OdString path) { listed.unread.push_back(std::move(path)); });
        if (!visited)
            return visited.error();
        if (!rules.isRead())
            listed.unread.emplace_back(layout::ignoreRulesPath);
        // The folders and the rules were read by their paths.
        if (const Expected<void> checked =
                checkMetadata(repository->folder, repository->root.path());
            !checked)
            return checked.error();
        return listed;
    });
}

}  // namespace qrv
