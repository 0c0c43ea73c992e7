#include "Session.h"

#include "Changes.h"
#include <platform/ut/FileName.h>

#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

namespace {

Expected<void> storeInto(LastCommit& commit, const common::StagedFile& file, Session& session) {
    if (file.change == common::FileChange::removed) {
        commit.urls.erase(file.path);
        return {};
    }
    const Expected<OdString> url = session.storage.store(session.root, file.path);
    if (!url)
        return url.error();
    commit.urls[file.path] = *url;
    return {};
}

Expected<void> log(const LastCommit& commit, const common::RootPath& root) {
    if (common::logString(OdString::format(L"made commit %i", commit.number), root))
        return {};
    return ErrorMessage{OdString::format(L"The log '%ls' cannot be written", root.logPath())};
}

bool isChanged(const OdString& path, const common::RepoChanges& changes) {
    return std::any_of(changes.changes.begin(), changes.changes.end(),
                       [&](const common::StatusRef& file) { return file.path() == path; });
}

// A file that the ignore rules hide is nobody's change, but it must not be lost either.
bool isHidden(const OdString& path, const Session& session) {
    constexpr int anyKind = 0x1FFF;
    return session.lastCommit.urls.count(path) == 0 &&
           ut::FileName(session.root.pathTo(path)).exists(anyKind);
}

}  // namespace

Expected<Session> Session::open(const OdString& folder, const common::IoInterface& io) {
    const Expected<common::RootPath> root = common::RootPath::get(folder, true);
    if (!root)
        return root.error();
    common::Cache::create(*root, io);  // a state that is there stays as it is
    const Expected<std::shared_ptr<common::Cache>> cache = common::Cache::get(*root, io);
    if (!cache)
        return cache.error();
    const Expected<LastCommit> lastCommit = LastCommit::load(*root);
    if (!lastCommit)
        return lastCommit.error();
    return Session{*root, *cache, *lastCommit, {}};
}

Expected<common::RepoChanges> Session::findChanges(
    const std::function<void(const OdString&)>& onError) const {
    const Expected<std::vector<common::File>> files = common::collectRepoFiles(onError, root);
    if (!files)
        return files.error();
    return changesSince(lastCommit, *files, root);
}

Expected<void> Session::commit(const common::StagedFile& file) {
    // Every return before `commit` puts the state back.
    common::Transaction transaction = cache->getTransaction();
    cache->write().stagedFiles = {file};
    LastCommit next = lastCommit;
    ++next.number;
    const Expected<void> stored = storeInto(next, file, *this);
    if (!stored)
        return stored;
    const Expected<void> saved = next.save(root);
    if (!saved)
        return saved;
    common::updateIndex(*cache, root);
    cache->write().stagedFiles.clear();
    transaction.commit();
    lastCommit = std::move(next);
    return log(lastCommit, root);
}

Expected<Session::Arrival> Session::takeOver(const OdString& path, const OdString& url,
                                             const common::RepoChanges& changes,
                                             const common::IoInterface& io) {
    const auto entry = lastCommit.urls.find(path);
    const OdString known = entry == lastCommit.urls.end() ? OdString() : entry->second;
    if (known == url)
        return Arrival::nothingNew;
    const bool isChangedHere = isChanged(path, changes) || isHidden(path, *this);
    if (known.isEmpty() && !isChangedHere) {
        const Expected<void> merged = storage.merge(path, path, L"", url, root, io);
        if (!merged)
            return merged.error();
        common::updateIndex(path, *cache, root, false);
        lastCommit.urls[path] = url;
        return Arrival::newFile;
    }
    const auto change =
        isChangedHere ? common::FileChange::modified : common::FileChange::unchanged;
    common::IoInterfaceRef ioRef(io);
    const Expected<bool> isTaken =
        storage.inFileUpdate(root, ioRef, *cache, {{path, known}, {path, url}}, change);
    if (!isTaken)
        return isTaken.error();
    if (!*isTaken)
        return Arrival::conflict;
    lastCommit.urls[path] = url;
    return Arrival::newVersion;
}

Expected<common::StagedFile> stage(const OdString& name, const common::RepoChanges& changes,
                                   const common::RootPath& root) {
    common::RepoFileExplorer explorer(changes, root);
    const auto found = explorer.findForStaging(name);
    if (const auto* error = std::get_if<ErrorMessage>(&found))
        return *error;
    const auto* file = std::get_if<common::StagedFile>(&found);
    if (file == nullptr || !explorer.stage(*file))
        return ErrorMessage{OdString::format(L"No changed file is named '%ls'", name)};
    return *file;
}
