#include <common/server/Commit.h>
#include <common/server/RecordKeysInternal.h>
#include <common/server/RefTypeInternal.h>

#include <utility>

namespace common {

using jsonlib::json::Array;
using jsonlib::json::Object;
using jsonlib::json::Value;

namespace {

Object serializeFile(const RepoFile& file) {
    Object record;
    record[recordKeys::path] = file.path.toWide();
    record[recordKeys::storagePath] = file.url.toWide();
    if (file.file && !file.file->path.isEmpty() && file.file->path != file.path)
        record[recordKeys::previousPath] = file.file->path.toWide();
    return record;
}

Object serializeReference(const Reference& reference) {
    Object record;
    record[recordKeys::refType] = toString(reference.type).toWide();
    record[recordKeys::name] = reference.name.toWide();
    record[recordKeys::commitHash] = reference.commitHash.toWide();
    return record;
}

}  // namespace

Object serializeCommit(const std::vector<RepoFile>& files, const OdString& author,
                       const OdString& message, const OdString& hash,
                       const std::vector<OdString>& parentHashes) {
    Array fileRecords;
    for (const RepoFile& file : files)
        fileRecords.emplace_back(serializeFile(file));
    Array parents;
    for (const OdString& parent : parentHashes)
        parents.emplace_back(parent.toWide());

    const OdTimeStamp now(OdTimeStamp::kInitUniversalTime);
    Object record;
    record[recordKeys::annotation] =
        serializeAnnotation(author, now.strftime(L"%Y-%m-%dT%H:%M:%SZ"), message);
    record[recordKeys::hash] = hash.toWide();
    record[recordKeys::files] = std::move(fileRecords);
    record[recordKeys::parentsHashes] = std::move(parents);
    return record;
}

Value serializeCommitInfo(const CommitInfo& commitInfo) {
    Array commits;
    commits.emplace_back(serializeCommit(commitInfo.files, commitInfo.author, commitInfo.message,
                                         commitInfo.hash, commitInfo.parentHashes));
    Array references;
    for (const Reference& reference : commitInfo.references)
        references.emplace_back(serializeReference(reference));

    Object record;
    record[recordKeys::commits] = std::move(commits);
    record[recordKeys::references] = std::move(references);
    return record;
}

}  // namespace common
