#include <engine/base/WithoutExceptions.h>
#include <engine/operations/Name.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/MetadataCheck.h>
#include <engine/repository/ProjectName.h>

namespace qrv {

namespace {

NamedProject namedProject(const common::RootPath& root) {
    return {.root = root, .name = projectName(root), .displayName = displayName(root)};
}

}  // namespace

Expected<NamedProject> projectIn(const std::string& folder, Caller& caller) {
    return withoutExceptions([&]() -> Expected<NamedProject> {
        const Expected<RepositoryPlace> repository = openRepository(folder, caller);
        if (!repository)
            return repository.error();
        NamedProject project = namedProject(repository->root);
        // The library read it by its path.
        if (Expected<void> checked = checkMetadata(repository->folder, repository->root.path());
            !checked)
            return checked.error();
        return project;
    });
}

Expected<NamedProject> renameProject(const std::string& folder, const OdString& name,
                                     Caller& caller) {
    return withoutExceptions([&]() -> Expected<NamedProject> {
        if (const std::string refusal = refusalOfName(name.toNarrow()); !refusal.empty())
            return ErrorMessage{OdString::fromNarrow(refusal)};
        const Expected<RepositoryPlace> repository = openRepository(folder, caller);
        if (!repository)
            return repository.error();
        if (Expected<void> named =
                setProjectName(name.toNarrow(), repository->root, repository->folder, caller);
            !named)
            return named.error();
        return namedProject(repository->root);
    });
}

}  // namespace qrv
