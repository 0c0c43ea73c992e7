#include <common/json/JsonAccess.h>
#include <common/server/RecordInternal.h>
#include <common/server/RecordKeysInternal.h>
#include <common/server/RepoData.h>
#include <common/server/RepoDataInternal.h>

namespace common {

using jsonlib::json::Object;

Expected<RepoData> readRepoData(const Object& record) {
    if (!hasKey(record, recordKeys::name))
        return missingKey(L"repo data", recordKeys::name);
    if (!hasKey(record, recordKeys::id))
        return missingKey(L"repo data", recordKeys::id);
    RepoData repository;
    repository.name = getStringValue(record, recordKeys::name, OdString());
    repository.id = getStringValue(record, recordKeys::id, OdString());
    return repository;
}

Expected<RepoData> deserializeRepoData(const OdString& text) {
    return readRepoData(readObject(text));
}

Expected<std::vector<RepoData>> deserializeRepoDatas(const OdString& text) {
    return readList<RepoData>(readArray(text), readRepoData);
}

}  // namespace common
