#include <common/base/MessageInternal.h>
#include <common/config/ConfigFileInternal.h>
#include <common/json/JsonAccess.h>
#include <common/json/ParseObjectInternal.h>
#include <common/json/Writer.h>
#include <platform/ut/ReadEntireFile.h>
#include <platform/ut/TextFile.h>

#include <utility>

namespace common {

using jsonlib::json::Array;
using jsonlib::json::Object;
using jsonlib::json::Value;
using jsonlib::json::Value_type;

namespace {

// Plain constants: a registry may be written when every object of this library has been destroyed.
constexpr const wchar_t* projectsKey = L"projects_map";
constexpr const wchar_t* pathKey = L"path";
constexpr const wchar_t* infoKey = L"info";
constexpr const wchar_t* nameKey = L"name";
constexpr const wchar_t* uidKey = L"uid";

std::pair<OdString, ProjectInfo> readProject(const Object& record) {
    const Object& info = getObjectValue(record, infoKey, OdString());
    ProjectInfo project;
    project.uid = getStringValue(info, uidKey, OdString());
    project.name = getStringValue(info, nameKey, OdString());
    return {getStringValue(record, pathKey, OdString()), std::move(project)};
}

Object writeProject(const OdString& path, const ProjectInfo& project) {
    Object info;
    info[nameKey] = project.name.toWide();
    info[uidKey] = project.uid.toWide();
    Object record;
    record[pathKey] = path.toWide();
    record[infoKey] = std::move(info);
    return record;
}

Value toJson(const ConfigData& projects) {
    Array records;
    for (const auto& [path, project] : projects.read())
        records.emplace_back(writeProject(path, project));
    Object document;
    if (!records.empty())
        document[projectsKey] = std::move(records);
    return document;
}

}  // namespace

Expected<ConfigData> readConfigFile(const OdString& file) {
    ConfigData projects;
    const Object document = parseObject(ut::readEntireFile(file));
    if (!hasKey(document, projectsKey))
        return projects;
    for (const Value& element : getArrayValue(document, projectsKey, OdString())) {
        if (element.type() != Value_type::object)
            return composeMessage(element, Value_type::object, L"parsing json map.");
        projects.write().insert(readProject(element.getObject()));
    }
    return projects;
}

Expected<void> writeConfigFile(const ConfigData& projects, const OdString& target,
                               const OdString& file) try {
    ut::TextFile text(target);
    text.addLine(OdString(jsonlib::json::write(toJson(projects))));
    if (!text.write())
        return translatedError(L"Error writing to file '%ls'", file);
    return {};
} catch (...) {
    return unexpectedConfigError();
}

ErrorMessage unexpectedConfigError() {
    // The word "deserializing" is wanted in this text.
    return translatedError(L"An unexpected error occurred while deserializing the config file.");
}

}  // namespace common
