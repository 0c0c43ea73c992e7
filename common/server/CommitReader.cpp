#include <common/base/MessageInternal.h>
#include <common/json/JsonAccess.h>
#include <common/server/Commit.h>
#include <common/server/RecordInternal.h>
#include <common/server/RecordKeysInternal.h>

#include <utility>

namespace common {

using jsonlib::json::Array;
using jsonlib::json::Object;
using jsonlib::json::Value;
using jsonlib::json::Value_type;

Expected<std::vector<OdString>> deserializeParentHashes(const Array& hashes) {
    std::vector<OdString> texts;
    for (const Value& hash : hashes) {
        if (hash.type() != Value_type::string)
            return translatedError(L"Could not parse parent hash, %ls type found.",
                                   toString(hash.type()));
        texts.push_back(getStringValue(hash));
    }
    return texts;
}

Expected<CommitFile> deserializeRepoFile(const Object& record) {
    if (!hasKey(record, recordKeys::storagePath))
        return missingKey(L"repo file", recordKeys::storagePath);
    if (!hasKey(record, recordKeys::path))
        return missingKey(L"repo file", recordKeys::path);
    CommitFile file;
    file.current.storagePath = getStringValue(record, recordKeys::storagePath, OdString());
    file.current.path = getStringValue(record, recordKeys::path, OdString());
    if (!hasKey(record, recordKeys::previousPath))
        return file;
    const Value& previousPath = getValue(record, recordKeys::previousPath, OdString());
    if (previousPath.type() != Value_type::null)
        file.previous = std::make_shared<File>(getStringValue(previousPath));
    return file;
}

Expected<Commit> deserializeCommit(const Object& record) {
    Expected<Annotation> annotation =
        deserializeAnnotation(getObjectValue(record, recordKeys::annotation, OdString()));
    if (!annotation)
        return annotation.error();
    Commit commit;
    commit.annotation = std::move(*annotation);

    if (hasKey(record, recordKeys::parentsHashes)) {
        Expected<std::vector<OdString>> parentHashes =
            deserializeParentHashes(getArrayValue(record, recordKeys::parentsHashes, OdString()));
        if (!parentHashes)
            return parentHashes.error();
        commit.parentHashes = std::move(*parentHashes);
    }

    Expected<std::vector<CommitFile>> files = readList<CommitFile>(
        getArrayValue(record, recordKeys::files, OdString()), deserializeRepoFile);
    if (!files)
        return files.error();
    commit.files = std::move(*files);

    if (!hasKey(record, recordKeys::hash))
        return missingKey(L"commit", recordKeys::hash);
    if (!hasKey(record, recordKeys::commitNo))
        return missingKey(L"commit", recordKeys::commitNo);
    commit.hash = getStringValue(record, recordKeys::hash, OdString());
    commit.commitNo = getUInt64Value(record, recordKeys::commitNo, OdString());
    return commit;
}

}  // namespace common
