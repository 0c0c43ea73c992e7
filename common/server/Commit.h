#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/json/Value.h>
#include <common/server/Annotation.h>
#include <common/server/Reference.h>
#include <common/worktree/File.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace common {

/// An item as it is now and as it was before.
template <class T, class P>
struct Versions {
    T current;   ///< now
    P previous;  ///< before
};

/// A file of a commit.
struct VersionedFile {
    OdString path;         ///< relative to the repository's root
    OdString storagePath;  ///< the storage URL of its contents
};

/// A file of a commit with, when it was renamed, the file it was before.
using CommitFile = Versions<VersionedFile, std::shared_ptr<File>>;

/// A commit as the server sends it.
struct Commit {
    OdString hash;                       ///< identifies the commit
    std::uint64_t commitNo = 0;          ///< the server's running number
    Annotation annotation;               ///< who, when and why
    std::vector<OdString> parentHashes;  ///< empty for a first commit
    std::vector<CommitFile> files;       ///< in the record's order
};

/// What a new commit sends: the commit, and the references to move.
struct CommitInfo {
    std::vector<RepoFile> files;         ///< in the order in which they are sent
    std::vector<Reference> references;   ///< to be moved to the commit
    std::vector<OdString> parentHashes;  ///< empty for a first commit
    OdString hash;                       ///< identifies the commit
    OdString author;                     ///< who commits
    OdString message;                    ///< why
};

/// The outgoing record of a commit, dated now in universal time ("2024-03-05T14:07:09Z"). A file's
/// "previousPath" is written only when it had another path before.
QRV_COMMON_EXPORT jsonlib::json::Object serializeCommit(const std::vector<RepoFile>& files,
                                                        const OdString& author,
                                                        const OdString& message,
                                                        const OdString& hash,
                                                        const std::vector<OdString>& parentHashes);
/// The commit as the only element of "commits", and the references. A reference whose type is
/// neither branch nor tag is written with the type "Unsupported reftype".
QRV_COMMON_EXPORT jsonlib::json::Value serializeCommitInfo(const CommitInfo& commitInfo);

/// Texts, in order; an element of another kind is an error that names that kind.
QRV_COMMON_EXPORT Expected<std::vector<OdString>> deserializeParentHashes(
    const jsonlib::json::Array& hashes);
/// Reads a file of a commit. An absent "storagePath" or "path" is an error; a member that is no
/// text throws `JsonParseError`. "previousPath" may be absent or null.
QRV_COMMON_EXPORT Expected<CommitFile> deserializeRepoFile(const jsonlib::json::Object& record);
/// Reads a commit. An absent "annotation" or "files" and a member of the wrong kind throw
/// `JsonParseError`; an absent "hash" or "commitNo" and whatever a part of it returns as an error
/// is an error. "parentsHashes" may be absent.
QRV_COMMON_EXPORT Expected<Commit> deserializeCommit(const jsonlib::json::Object& record);

}  // namespace common
