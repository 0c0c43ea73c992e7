#include <common/json/JsonAccess.h>
#include <common/server/FetchData.h>
#include <common/server/RecordInternal.h>
#include <common/server/RecordKeysInternal.h>
#include <common/server/RepoDataInternal.h>

#include <utility>

namespace common {

using jsonlib::json::Object;

Expected<FetchData> deserializeFetchData(Object record) {
    if (!hasKey(record, recordKeys::repository))
        return missingKey(L"fetch data", recordKeys::repository);
    Expected<RepoData> repository =
        readRepoData(getObjectValue(record, recordKeys::repository, OdString()));
    if (!repository)
        return repository.error();
    FetchData fetched;
    fetched.repository = std::move(*repository);

    const bool hasCommits = hasKey(record, recordKeys::commits);
    if (!hasKey(record, recordKeys::references)) {
        if (hasCommits)
            return missingKey(L"fetch data", recordKeys::references);
        return fetched;
    }
    Expected<std::vector<Reference>> references = readList<Reference>(
        getArrayValue(record, recordKeys::references, OdString()), deserializeReference);
    if (!references)
        return references.error();
    fetched.references = std::move(*references);

    if (!hasCommits)
        return fetched;
    Expected<std::vector<Commit>> commits =
        readList<Commit>(getArrayValue(record, recordKeys::commits, OdString()), deserializeCommit);
    if (!commits)
        return commits.error();
    fetched.commits = std::move(*commits);
    return fetched;
}

}  // namespace common
