#include <cli/user/ProjectRegistry.h>
#include <cli/user/Settings.h>
#include <common/json/Reader.h>
#include <common/json/Value.h>
#include <common/json/Writer.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <platform/kernel/OdError.h>
#include <platform/ut/ReadEntireFile.h>
#include <platform/ut/TextFile.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace qrv::cli {

namespace {

using jsonlib::json::Object;
using jsonlib::json::Value;
using jsonlib::json::Value_type;

constexpr std::int64_t greatestValue = 1'000'000'000;

ErrorMessage unreadable(const OdString& path, const OdString& cause) {
    return {
        OdString::format(tr(L"The settings '%ls' cannot be read: %ls"), printable(path), cause)};
}

Expected<OdString> settingsPath() {
    const Expected<OdString> folder = configurationFolder();
    if (!folder)
        return folder.error();
    return *folder + L"/settings.json";
}

Expected<Object> readObject(const OdString& path) try {
    if (!ut::TextFile(path).exists())
        return Object();
    const OdString text = ut::readEntireFile(path);
    Value document;
    if (!jsonlib::json::read(text.c_str(), text.c_str() + text.getLength(), document) ||
        document.type() != Value_type::object)
        return unreadable(path, tr(L"it is no JSON object"));
    return std::move(document.getObject());
} catch (const OdError& error) {
    return unreadable(path, error.description());
} catch (const std::length_error&) {
    return unreadable(path, tr(L"it ends in the middle of a text"));
}

std::wstring wideKey(const Setting& setting) {
    return OdString(setting.key).toWide();
}

constexpr const wchar_t* trustedKey = L"trusted";

Expected<void> writeObject(const OdString& path, Object object) {
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(path.toNarrow()).parent_path(),
                                        error);
    ut::TextFile file(path);
    file.addLine(OdString(jsonlib::json::write(Value(std::move(object)))));
    file.addLine({});
    if (file.write())
        return {};
    return ErrorMessage{
        OdString::format(tr(L"The settings '%ls' cannot be written"), printable(path))};
}

bool isListOfTexts(const Value& value) {
    return value.type() == Value_type::array &&
           std::all_of(value.getArray().begin(), value.getArray().end(),
                       [](const Value& element) { return element.type() == Value_type::string; });
}

bool isPossible(const Value& value) {
    return value.type() == Value_type::integer && value.getInt64() >= 0 &&
           value.getInt64() <= greatestValue;
}

Expected<Settings> settingsOf(const Object& object, const OdString& path) {
    Settings settings;
    for (const Setting& setting : allSettings()) {
        const auto member = object.find(wideKey(setting));
        if (member == object.end())
            continue;
        if (!isPossible(member->second))
            return unreadable(
                path, OdString::format(tr(L"the value of '%ls' cannot be"), OdString(setting.key)));
        settings.*setting.value = member->second.getInt64();
    }
    return settings;
}

}  // namespace

std::span<const Setting> allSettings() {
    static constexpr Setting all[] = {
        {"large-commit",
         translatable(L"Warn of a commit with more megabytes than this; 0 for never"),
         &Settings::largeCommitMegabytes},
        {"large-file", translatable(L"Warn of a file with more megabytes than this; 0 for never"),
         &Settings::largeFileMegabytes},
        {"shared-folders",
         translatable(L"Give what is made in a repository that its group may write to the "
                      L"permissions of its folder; 0 for those of your own mask"),
         &Settings::sharedFolders},
    };
    return all;
}

Expected<Setting> findSetting(const std::string& key) {
    OdString keys;
    for (const Setting& setting : allSettings()) {
        if (key == setting.key)
            return setting;
        keys += (keys.isEmpty() ? OdString() : OdString(L", ")) + OdString(setting.key);
    }
    keys += OdString(L", ") + trustedKey;
    return ErrorMessage{OdString::format(tr(L"There is no setting '%ls'; there are: %ls"),
                                         printable(OdString::fromNarrow(key)), keys)};
}

Expected<Settings> readSettings() {
    const Expected<OdString> path = settingsPath();
    if (!path)
        return path.error();
    const Expected<Object> object = readObject(*path);
    if (!object)
        return object.error();
    return settingsOf(*object, *path);
}

Expected<std::int64_t> parseSettingValue(const std::string& text) {
    std::int64_t value = -1;
    const char* const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc() && behind == end && value >= 0 && value <= greatestValue)
        return value;
    return ErrorMessage{OdString::format(tr(L"'%ls' is no whole number from 0 to %i"),
                                         printable(OdString::fromNarrow(text)), greatestValue)};
}

Expected<void> changeSetting(const Setting& setting, std::int64_t value) {
    const Expected<OdString> path = settingsPath();
    if (!path)
        return path.error();
    Expected<Object> object = readObject(*path);
    if (!object)
        return object.error();
    (*object)[wideKey(setting)] = value;
    // A file that nothing can be read from afterwards is not written.
    if (const Expected<Settings> possible = settingsOf(*object, *path); !possible)
        return possible.error();
    return writeObject(*path, std::move(*object));
}

Expected<std::vector<OdString>> trustedFolders() {
    const Expected<OdString> path = settingsPath();
    if (!path)
        return path.error();
    const Expected<Object> object = readObject(*path);
    if (!object)
        return object.error();
    std::vector<OdString> folders;
    const auto member = object->find(trustedKey);
    if (member == object->end())
        return folders;
    if (!isListOfTexts(member->second))
        return unreadable(*path, OdString::format(tr(L"the value of '%ls' cannot be"), trustedKey));
    for (const Value& folder : member->second.getArray())
        folders.emplace_back(folder.getString());
    std::sort(folders.begin(), folders.end());
    folders.erase(std::unique(folders.begin(), folders.end()), folders.end());
    return folders;
}

Expected<void> changeTrustedFolders(const std::vector<OdString>& folders) {
    const Expected<OdString> path = settingsPath();
    if (!path)
        return path.error();
    Expected<Object> object = readObject(*path);
    if (!object)
        return object.error();
    jsonlib::json::Array list;
    for (const OdString& folder : folders)
        list.emplace_back(folder.toWide());
    (*object)[trustedKey] = std::move(list);
    return writeObject(*path, std::move(*object));
}

}  // namespace qrv::cli
