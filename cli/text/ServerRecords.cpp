#include <cli/text/ServerRecords.h>
#include <common/json/JsonAccess.h>
#include <common/json/Reader.h>
#include <common/server/Annotation.h>
#include <common/server/Commit.h>
#include <common/server/CommitNumber.h>
#include <common/server/FetchData.h>
#include <common/server/Reference.h>
#include <common/server/RepoData.h>
#include <common/server/ServerAnswer.h>

#include <array>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace {

using jsonlib::json::Array;
using jsonlib::json::Object;
using jsonlib::json::Value;
using jsonlib::json::Value_type;

/// "2024-03-05T14:07:09.250Z".
OdString dateText(const OdTimeStamp& date) {
    // With a thousand before them the milliseconds have all their zeros.
    const OdString fraction =
        OdString::format(L"%i", 1000 + date.msecsPastMidnight() % 1000).right(3);
    return OdString::format(L"%ls.%lsZ", date.strftime(L"%Y-%m-%dT%H:%M:%S"), fraction);
}

Value textUnder(const wchar_t* key, const OdString& text) {
    Object object;
    object[key] = text.toWide();
    return object;
}

Value serverId(const OdString& id) {
    return textUnder(L"id", id);
}

Value commandVersion(const OdString& version) {
    return textUnder(L"commandVersion", version);
}

Value toJson(const OdString& text) {
    return text.toWide();
}

Value toJson(const common::RepoData& repository) {
    Object object;
    object[L"id"] = repository.id.toWide();
    object[L"name"] = repository.name.toWide();
    return object;
}

Value toJson(const common::Reference& reference) {
    Object object;
    object[L"commitHash"] = reference.commitHash.toWide();
    object[L"name"] = reference.name.toWide();
    object[L"refType"] = reference.type == common::RefType::Branch ? L"branch" : L"tag";
    return object;
}

Value toJson(const common::Annotation& annotation) {
    Object object;
    object[L"author"] = annotation.author.toWide();
    object[L"date"] = dateText(annotation.date).toWide();
    object[L"dateMs"] = annotation.date.packedValue();
    object[L"message"] = annotation.message.toWide();
    return object;
}

Value toJson(const common::CommitFile& file) {
    Object object;
    object[L"path"] = file.current.path.toWide();
    object[L"storagePath"] = file.current.storagePath.toWide();
    if (file.previous)
        object[L"previousPath"] = file.previous->path.toWide();
    return object;
}

Value toJson(const common::CommitNumberPair& number) {
    Object object;
    object[L"commitNo"] = number.commitNo;
    object[L"hash"] = number.hash.toWide();
    return object;
}

Value toJson(const common::Commit& commit);

template <class Element>
Value listToJson(const std::vector<Element>& elements) {
    Array array;
    for (const Element& element : elements)
        array.push_back(toJson(element));
    return array;
}

Value toJson(const common::Commit& commit) {
    Object object;
    object[L"annotation"] = toJson(commit.annotation);
    object[L"commitNo"] = commit.commitNo;
    object[L"files"] = listToJson(commit.files);
    object[L"hash"] = commit.hash.toWide();
    object[L"parentsHashes"] = listToJson(commit.parentHashes);
    return object;
}

Value toJson(const common::FetchData& fetched) {
    Object object;
    object[L"commits"] = listToJson(fetched.commits);
    object[L"references"] = listToJson(fetched.references);
    object[L"repository"] = toJson(fetched.repository);
    return object;
}

template <class Record>
Expected<Value> answer(const Expected<Record>& record, Value (*convert)(const Record&)) {
    return record ? Expected<Value>(convert(*record)) : record.error();
}

/// The document, for the readers that take one. As with those that take a text, one that is no
/// JSON counts as null.
Value parsed(const OdString& text, Value_type expected) {
    Value document;
    static_cast<void>(jsonlib::json::read(text.c_str(), text.c_str() + text.getLength(), document));
    common::checkType(document, expected, OdString(), OdString());
    return document;
}

Object objectIn(const OdString& text) {
    return std::move(parsed(text, Value_type::object).getObject());
}

Array arrayIn(const OdString& text) {
    return std::move(parsed(text, Value_type::array).getArray());
}

using Text = const OdString&;

}  // namespace

std::span<const RecordKind> recordKinds() {
    using namespace common;
    static constexpr std::array<RecordKind, 13> kinds = {{
        {"init-data",
         [](Text text) { return answer(deserializeInitData(objectIn(text)), serverId); }},
        {"server-version",
         [](Text text) { return answer(deserializeServerVersion(text), commandVersion); }},
        {"repository",
         [](Text text) { return answer<RepoData>(deserializeRepoData(text), toJson); }},
        {"repositories",
         [](Text text) { return answer(deserializeRepoDatas(text), listToJson<RepoData>); }},
        {"reference",
         [](Text text) { return answer<Reference>(deserializeReference(objectIn(text)), toJson); }},
        {"references",
         [](Text text) { return answer(deserializeReferences(text), listToJson<Reference>); }},
        {"annotation",
         [](Text text) {
             return answer<Annotation>(deserializeAnnotation(objectIn(text)), toJson);
         }},
        {"parent-hashes",
         [](Text text) {
             return answer(deserializeParentHashes(arrayIn(text)), listToJson<OdString>);
         }},
        {"repo-file",
         [](Text text) { return answer<CommitFile>(deserializeRepoFile(objectIn(text)), toJson); }},
        {"commit",
         [](Text text) { return answer<Commit>(deserializeCommit(objectIn(text)), toJson); }},
        {"commit-number",
         [](Text text) {
             return answer<CommitNumberPair>(deserializeCommitNumber(objectIn(text)), toJson);
         }},
        {"commit-numbers",
         [](Text text) {
             return answer(deserializeCommitNumbers(arrayIn(text)), listToJson<CommitNumberPair>);
         }},
        {"fetch",
         [](Text text) { return answer<FetchData>(deserializeFetchData(objectIn(text)), toJson); }},
    }};
    return kinds;
}

}  // namespace qrv::cli
