#include <common/json/JsonAccess.h>
#include <common/server/CommitNumber.h>
#include <common/server/RecordInternal.h>
#include <common/server/RecordKeysInternal.h>

namespace common {

using jsonlib::json::Array;
using jsonlib::json::Object;

Expected<CommitNumberPair> deserializeCommitNumber(const Object& record) {
    if (!hasKey(record, recordKeys::hash))
        return missingKey(L"commit number", recordKeys::hash);
    if (!hasKey(record, recordKeys::commitNo))
        return missingKey(L"commit number", recordKeys::commitNo);
    CommitNumberPair pair;
    pair.hash = getStringValue(record, recordKeys::hash, OdString());
    pair.commitNo = getUInt64Value(record, recordKeys::commitNo, OdString());
    return pair;
}

Expected<std::vector<CommitNumberPair>> deserializeCommitNumbers(const Array& records) {
    return readList<CommitNumberPair>(records, deserializeCommitNumber);
}

}  // namespace common
