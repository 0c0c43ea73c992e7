#include <common/json/JsonAccess.h>
#include <common/server/RecordInternal.h>
#include <common/server/RecordKeysInternal.h>
#include <common/server/ServerAnswer.h>

namespace common {

using jsonlib::json::Object;

Expected<OdString> deserializeInitData(const Object& record) {
    if (!hasKey(record, recordKeys::id))
        return missingKey(L"init data", recordKeys::id);
    return getStringValue(record, recordKeys::id, OdString());
}

Expected<OdString> deserializeServerVersion(const OdString& text) {
    const Object record = readObject(text);
    if (!hasKey(record, recordKeys::commandVersion))
        return missingKey(L"server version", recordKeys::commandVersion);
    return getStringValue(record, recordKeys::commandVersion, OdString());
}

}  // namespace common
