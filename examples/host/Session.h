#pragma once

#include "LastCommit.h"
#include "ObjectStorage.h"
#include <common/common.h>

#include <functional>
#include <memory>

/// One project while somebody works on it. Prints nothing: the program does.
struct Session {
    /// Opens the project in `folder`, and makes it a repository where it is none yet. `io` must
    /// outlive the session. Throws `std::length_error` when a file of the repository ends inside a
    /// string.
    static Expected<Session> open(const OdString& folder, const common::IoInterface& io);

    /// What was changed since the last commit. `onError` is told what is wrong in the ignore file.
    Expected<common::RepoChanges> findChanges(
        const std::function<void(const OdString&)>& onError) const;

    /// Commits one changed file. On failure the state and the last commit are as they were, unless
    /// only the log could not be written.
    Expected<void> commit(const common::StagedFile& file);

    enum class Arrival { nothingNew, newFile, newVersion, conflict };
    /// Takes over the version `url` of the file `path`, which the storage must hold already. With a
    /// conflict the working file stays as it is.
    Expected<Arrival> takeOver(const OdString& path, const OdString& url,
                               const common::RepoChanges& changes, const common::IoInterface& io);

    common::RootPath root;
    std::shared_ptr<common::Cache> cache;
    LastCommit lastCommit;
    ObjectStorage storage;
};

/// The one changed file with the short name `name`. Throws `std::regex_error` when the name is no
/// expression.
Expected<common::StagedFile> stage(const OdString& name, const common::RepoChanges& changes,
                                   const common::RootPath& root);
