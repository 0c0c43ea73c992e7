#include "LastCommit.h"

#include <platform/kernel/OdError.h>
#include <platform/ut/ReadEntireFile.h>
#include <platform/ut/TextFile.h>

namespace {

const wchar_t* const numberKey = L"number";
const wchar_t* const filesKey = L"files";

OdString commitFile(const common::RootPath& root) {
    return common::RootPath::qrvPath(root.path()) + ut::FileName::getPathSeparator() +
           L"example_host.commit";
}

LastCommit parse(const OdString& text, const OdString& file) {
    jsonlib::json::Value value;
    if (!jsonlib::json::read(text.c_str(), text.c_str() + text.getLength(), value))
        throw OdError(OdString::format(L"'%ls' is no JSON", file));
    common::checkType(value, jsonlib::json::Value_type::object, file, L"");
    LastCommit commit;
    commit.number = common::getIntValue(value.getObject(), numberKey, file);
    for (const auto& [path, url] : common::getObjectValue(value.getObject(), filesKey, file))
        commit.urls[path] = common::getStringValue(url);
    return commit;
}

}  // namespace

Expected<LastCommit> LastCommit::load(const common::RootPath& root) {
    const OdString file = commitFile(root);
    if (!ut::TextFile(file).exists())
        return LastCommit();
    try {
        return parse(ut::readEntireFile(file), file);
    } catch (const OdError& error) {  // what the JSON functions throw is one, too
        return ErrorMessage{error.description()};
    }
}

Expected<void> LastCommit::save(const common::RootPath& root) const {
    jsonlib::json::Object files;
    for (const auto& [path, url] : urls)
        files[path.toWide()] = url.toWide();
    jsonlib::json::Object commit;
    commit[numberKey] = number;
    commit[filesKey] = std::move(files);

    ut::TextFile file(commitFile(root));
    file.addLine(jsonlib::json::write(commit));
    if (!file.write())
        return ErrorMessage{OdString::format(L"'%ls' cannot be written", commitFile(root))};
    return {};
}
