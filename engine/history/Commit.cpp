#include <common/json/Value.h>
#include <common/json/Writer.h>
#include <common/server/Annotation.h>
#include <common/server/Commit.h>
#include <common/worktree/File.h>
#include <engine/base/Digest.h>
#include <engine/history/Commit.h>
#include <engine/history/CommitRecord.h>
#include <platform/kernel/OdTimeStamp.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

namespace qrv {

namespace {

/// The text as the database gives it back: a lone half of a surrogate pair, for which UTF-8 has no
/// form, becomes the bytes with which it is written. Paths and URLs have none.
OdString asStored(const OdString& text) {
    return OdString::fromNarrow(text.toNarrow());
}

common::RepoFile toRecord(const FileDelta& delta) {
    if (!delta.previousPath)
        return {delta.path, delta.url};
    return {delta.path, delta.url, std::make_unique<common::File>(*delta.previousPath)};
}

std::vector<common::RepoFile> filesOf(const NewCommit& commit) {
    std::vector<common::RepoFile> files;
    files.reserve(commit.deltas.size());
    for (const FileDelta& delta : commit.deltas)
        files.push_back(toRecord(delta));
    std::sort(files.begin(), files.end(),
              [](const auto& left, const auto& right) { return left.path < right.path; });
    return files;
}

OdString dateOf(const NewCommit& commit) {
    OdTimeStamp time;
    time.setPackedValue(commit.timeSeconds * 1000);
    return time.strftime(L"%Y-%m-%dT%H:%M:%SZ");
}

}  // namespace

std::string recordOf(const NewCommit& commit) {
    const OdString author = asStored(commit.author);
    const OdString message = asStored(commit.message);
    jsonlib::json::Object record =
        common::serializeCommit(filesOf(commit), author, message, OdString(), commit.parents);
    record[L"annotation"] = common::serializeAnnotation(author, dateOf(commit), message);
    record.erase(L"hash");
    const OdString text(jsonlib::json::write(std::move(record)));
    return text.toNarrow();
}

OdString hashOf(const NewCommit& commit) {
    return OdString::fromNarrow(Digest::of(recordOf(commit)));
}

}  // namespace qrv
