#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/diff/Differences.h>
#include <engine/history/CommitName.h>
#include <engine/operations/Show.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/storage/ReadToEnd.h>
#include <engine/storage/StorageMessages.h>
#include <engine/worktree/PathArgument.h>

#include <memory>
#include <span>
#include <utility>

namespace qrv {

namespace {

Expected<OdString> hashOf(Repository& repository, const std::string& name) {
    return findCommit(repository.history(), OdString::fromNarrow(name), repository.branch());
}

ShownCommit shownCommit(History& history, const OdString& hash) {
    CommitEntry commit = history.commit(hash).value();
    const OdString parent = commit.parents.empty() ? OdString() : commit.parents.front();
    std::vector<Difference> changes = withRenames(differencesOf(history.difference(parent, hash)),
                                                  renamesOf(history.deltas(hash)));
    return {.commit = std::move(commit),
            .changes = std::move(changes),
            .references = history.references()};
}

Expected<void> giveVersion(Repository& repository, const OdString& url,
                           const ContentsSink& contents) {
    const Expected<std::unique_ptr<VersionReader>> reader =
        repository.storages().ofUrl(url).open(repository.root(), url);
    if (!reader)
        return reader.error();
    if (*reader == nullptr)
        return notKept(url);
    CopyBuffer buffer((*reader)->sizeBytes());
    return readToEnd(**reader, buffer, [&contents](std::span<const char> bytes) {
        contents(std::string_view(bytes.data(), bytes.size()));
        return Expected<void>();
    });
}

Expected<void> giveFile(Repository& repository, const std::string& commit,
                        const std::string& argument, const ContentsSink& contents) {
    const Expected<OdString> hash = hashOf(repository, commit);
    if (!hash)
        return hash.error();
    const Expected<OdString> path = pathInRepository(repository.root(), argument);
    if (!path)
        return path.error();
    const std::optional<TreeFile> file = repository.history().fileAt(*hash, *path);
    if (!file)
        return ErrorMessage{OdString::format(tr(L"'%ls' is not in the commit"),
                                             printable(OdString::fromNarrow(argument)))};
    return giveVersion(repository, file->contents, contents);
}

using Shown = Expected<std::optional<ShownCommit>>;

Shown show(Repository& repository, const std::string& object, const ContentsSink& contents) {
    const Expected<OdString> hash = hashOf(repository, object);
    if (hash)
        return std::optional(shownCommit(repository.history(), *hash));
    // The name of a branch may have a colon in it, but then it is there.
    const std::size_t colon = object.find(':');
    if (colon == std::string::npos)
        return hash.error();
    if (!contents)
        return std::optional<ShownCommit>();
    const Expected<void> given =
        giveFile(repository, object.substr(0, colon), object.substr(colon + 1), contents);
    return given ? Shown(std::optional<ShownCommit>()) : Shown(given.error());
}

}  // namespace

Expected<std::optional<ShownCommit>> show(const std::string& folder, const std::string& object,
                                          const ContentsSink& contents, Caller& caller) {
    return withRepository(folder, Repository::Use::look, caller, [&](WorkingTree& workingTree) {
        return show(workingTree.repository(), object, contents);
    });
}

}  // namespace qrv
