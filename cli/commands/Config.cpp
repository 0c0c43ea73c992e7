#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/user/Settings.h>
#include <common/json/Value.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/repository/FindRepository.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace qrv::cli {

namespace {

namespace fs = std::filesystem;

struct Arguments {
    std::optional<std::string> key;
    std::optional<std::string> value;
    bool removes = false;
    bool asJson = false;
};

/// Of this setting the value is a list, to which a folder is added.
constexpr const char* trustedKey = "trusted";

jsonlib::json::Array toJson(const std::vector<OdString>& folders) {
    jsonlib::json::Array array;
    for (const OdString& folder : folders)
        array.emplace_back(folder.toWide());
    return array;
}

jsonlib::json::Value toJson(const Settings& settings, const std::vector<OdString>& trusted) {
    jsonlib::json::Object object;
    for (const Setting& setting : allSettings())
        object[OdString(setting.key).toWide()] = settings.*setting.value;
    object[OdString(trustedKey).toWide()] = toJson(trusted);
    return object;
}

std::string plainText(const Settings& settings, const std::vector<OdString>& trusted) {
    OdString text;
    for (const Setting& setting : allSettings())
        text += OdString::format(L"%ls %i  (%ls)\n", OdString(setting.key), settings.*setting.value,
                                 tr(setting.summary));
    for (const OdString& folder : trusted)
        text += OdString::format(tr(L"trusted %ls  (A repository of somebody else)\n"),
                                 printable(folder));
    return text.toNarrow();
}

Expected<void> change(const std::string& key, const std::string& text) {
    const Expected<Setting> setting = findSetting(key);
    if (!setting)
        return setting.error();
    const Expected<std::int64_t> value = parseSettingValue(text);
    return value ? changeSetting(*setting, *value) : value.error();
}

/// The folder as a repository in it is called: without links and, since a person may be anywhere in
/// a repository, that which holds it.
Expected<OdString> rootOf(const std::string& folder) {
    std::error_code error;
    const fs::path absolute = fs::absolute(folder, error);
    const fs::path path = error ? fs::path() : fs::weakly_canonical(absolute, error);
    if (error || folder.empty())
        return ErrorMessage{OdString::format(
            tr(L"'%ls' cannot be used: %ls"), printable(OdString::fromNarrow(folder)),
            OdString(error ? error.message().c_str() : "No such file or directory"))};
    const Expected<std::optional<RepositoryPlace>> repository = enclosingRepository(path);
    if (repository && *repository)
        return (*repository)->root.path();
    return toText(path.has_filename() ? path : path.parent_path());
}

Expected<void> changeTrust(const Arguments& arguments) {
    const Expected<OdString> folder = rootOf(*arguments.value);
    if (!folder)
        return folder.error();
    Expected<std::vector<OdString>> folders = trustedFolders();
    if (!folders)
        return folders.error();
    const auto place = std::lower_bound(folders->begin(), folders->end(), *folder);
    const bool isListed = place != folders->end() && *place == *folder;
    if (arguments.removes && !isListed)
        return ErrorMessage{OdString::format(
            tr(L"'%ls' is not among the repositories that you trust"), printable(*folder))};
    if (arguments.removes)
        folders->erase(place);
    else if (!isListed)
        folders->insert(place, *folder);
    return changeTrustedFolders(*folders);
}

Expected<void> runTrust(const Arguments& arguments, Output& output) {
    if (arguments.value) {
        if (Expected<void> changed = changeTrust(arguments); !changed)
            return changed;
    }
    const Expected<std::vector<OdString>> folders = trustedFolders();
    if (!folders)
        return folders.error();
    if (arguments.asJson)
        writeJson(toJson(*folders), output);
    else
        for (const OdString& folder : *folders)
            output.write((printable(folder) + L'\n').toNarrow());
    return {};
}

Expected<void> run(const Arguments& arguments, Output& output) {
    if (arguments.key && *arguments.key == trustedKey)
        return runTrust(arguments, output);
    if (arguments.removes)
        return ErrorMessage{tr(L"Only from the list 'trusted' can a value be removed")};
    if (arguments.value) {
        if (Expected<void> changed = change(*arguments.key, *arguments.value); !changed)
            return changed;
    }
    const Expected<Settings> settings = readSettings();
    if (!settings)
        return settings.error();
    if (!arguments.key) {
        const Expected<std::vector<OdString>> trusted = trustedFolders();
        if (!trusted)
            return trusted.error();
        if (arguments.asJson)
            writeJson(toJson(*settings, *trusted), output);
        else
            output.write(plainText(*settings, *trusted));
        return {};
    }
    const Expected<Setting> setting = findSetting(*arguments.key);
    if (!setting)
        return setting.error();
    const std::int64_t value = (*settings).*(setting->value);
    if (arguments.asJson)
        writeJson(value, output);
    else
        output.write(std::to_string(value) + "\n");
    return {};
}

}  // namespace

Action declareConfig(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const Argument key =
        parser.addOption("KEY", arguments->key, trUtf8(L"A setting (default: all are listed)"));
    const Argument value =
        parser
            .addOption("VALUE", arguments->value,
                       trUtf8(L"The value that it gets, or the folder that the list 'trusted' "
                              L"gets (default: it is printed)"))
            .needs(key);
    parser
        .addFlag("--remove", arguments->removes, trUtf8(L"Take the folder off the list 'trusted'"))
        .needs(value);
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the answer as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
