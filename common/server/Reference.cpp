#include <common/base/MessageInternal.h>
#include <common/json/JsonAccess.h>
#include <common/server/RecordInternal.h>
#include <common/server/RecordKeysInternal.h>
#include <common/server/RefTypeInternal.h>
#include <common/server/Reference.h>

namespace common {

using jsonlib::json::Object;
using jsonlib::json::Value_type;

OdString toString(RefType type) {
    switch (type) {
        case RefType::Branch:
            return L"branch";
        case RefType::Tag:
            return L"tag";
    }
    return L"Unsupported reftype";
}

Expected<RefType> toRefType(const OdString& text) {
    if (text == L"branch")
        return RefType::Branch;
    if (text == L"tag")
        return RefType::Tag;
    // Not translated: it reports a fault of the server, not of the user.
    return ErrorMessage{OdString::format(L"Unsupported type: %ls", text), 0};
}

namespace {

// The annotation of a reference is not kept, but one with a member of the wrong kind still throws.
void readAndDropAnnotation(const Object& record) {
    if (!hasKey(record, recordKeys::annotation))
        return;
    const jsonlib::json::Value& annotation = getValue(record, recordKeys::annotation, OdString());
    if (annotation.type() == Value_type::object)
        static_cast<void>(deserializeAnnotation(annotation.getObject()));
}

}  // namespace

Expected<Reference> deserializeReference(const Object& record) {
    readAndDropAnnotation(record);
    if (!hasKey(record, recordKeys::commitHash))
        return translatedError(L"No commit hash found in reference.");
    if (!hasKey(record, recordKeys::name))
        return translatedError(L"No name found in reference.");
    if (!hasKey(record, recordKeys::refType))
        return translatedError(L"No reference type found in reference.");
    const Expected<RefType> type =
        toRefType(getStringValue(record, recordKeys::refType, OdString()));
    if (!type)
        return type.error();
    Reference reference;
    reference.type = *type;
    reference.name = getStringValue(record, recordKeys::name, OdString());
    reference.commitHash = getStringValue(record, recordKeys::commitHash, OdString());
    return reference;
}

Expected<std::vector<Reference>> deserializeReferences(const OdString& text) {
    return readList<Reference>(readArray(text), deserializeReference);
}

}  // namespace common
