#include <CLI/CLI.hpp>
#include <cli/JsonOutput.h>
#include <cli/Output.h>
#include <cli/Settings.h>
#include <cli/Translation.h>
#include <cli/commands/Commands.h>
#include <common/json/Value.h>

#include <memory>
#include <optional>
#include <string>

namespace qrv_cli {

namespace {

struct Arguments {
    std::optional<std::string> key;
    std::optional<std::string> value;
    bool asJson = false;
};

jsonlib::json::Value toJson(const Settings& settings) {
    jsonlib::json::Object object;
    for (const Setting& setting : allSettings())
        object[OdString(setting.key).toWide()] = settings.*setting.value;
    return object;
}

std::string plainText(const Settings& settings) {
    OdString text;
    for (const Setting& setting : allSettings())
        text += OdString::format(L"%ls %i  (%ls)\n", OdString(setting.key), settings.*setting.value,
                                 tr(setting.summary));
    return text.toNarrow();
}

Expected<void> change(const std::string& key, const std::string& text) {
    const Expected<Setting> setting = findSetting(key);
    if (!setting)
        return setting.error();
    const Expected<std::int64_t> value = parseSettingValue(text);
    return value ? changeSetting(*setting, *value) : value.error();
}

Expected<void> run(const Arguments& arguments, Output& output) {
    if (arguments.value) {
        if (Expected<void> changed = change(*arguments.key, *arguments.value); !changed)
            return changed;
    }
    const Expected<Settings> settings = readSettings();
    if (!settings)
        return settings.error();
    if (!arguments.key) {
        if (arguments.asJson)
            writeJson(toJson(*settings), output);
        else
            output.write(plainText(*settings));
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

Action declareConfig(CLI::App& parser) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::Option* const key =
        parser.add_option("KEY", arguments->key, trUtf8(L"A setting (default: all are listed)"));
    parser
        .add_option("VALUE", arguments->value,
                    trUtf8(L"The value that it gets (default: it is printed)"))
        ->needs(key);
    parser.add_flag("--json", arguments->asJson, trUtf8(L"Print the answer as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv_cli
