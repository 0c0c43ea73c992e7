#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <common/json/Value.h>
#include <common/storage/StorageUrl.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/repository/FindRepository.h>

#include <memory>
#include <string>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string url;
    bool asJson = false;
};

struct StoredVersion {
    common::FileStorage::Type type = common::FileStorage::Plain;
    OdString revision;
    OdString path;
};

Expected<StoredVersion> storedVersion(const OdString& url, const common::RootPath& root) {
    const Expected<OdString> revision = common::getRevision(url);
    if (!revision)
        return revision.error();
    const Expected<OdString> path = common::getStoragePath(root, url);
    if (!path)
        return path.error();
    return StoredVersion{common::urlToType(url), *revision, *path};
}

std::string plainText(const StoredVersion& version) {
    const bool isDrawing = version.type == common::FileStorage::Drawing;
    return OdString::format(tr(L"Type: %ls\nRevision: %ls\nPath: %ls\n"),
                            isDrawing ? tr(L"drawing") : tr(L"plain file"),
                            printable(version.revision), printable(version.path))
        .toNarrow();
}

jsonlib::json::Value toJson(const StoredVersion& version) {
    jsonlib::json::Object object;
    object[L"type"] = version.type == common::FileStorage::Drawing ? L"drawing" : L"plain";
    object[L"revision"] = version.revision.toWide();
    object[L"path"] = version.path.toWide();
    return object;
}

Expected<void> locate(const Arguments& arguments, Output& output) {
    const Expected<common::RootPath> root = findRepository(".", person());
    if (!root)
        return root.error();
    const Expected<StoredVersion> version =
        storedVersion(OdString::fromNarrow(arguments.url), *root);
    if (!version)
        return version.error();
    if (arguments.asJson)
        writeJson(toJson(*version), output);
    else
        output.write(plainText(*version));
    return {};
}

}  // namespace

Action declareLocate(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser
        .addOption("URL", arguments->url,
                   trUtf8(L"A storage URL, such as tf:plan#12 or po: with a digest"))
        .required();
    parser.addFlag("--json", arguments->asJson,
                   trUtf8(L"Print type, revision and path as a JSON object"));
    return [arguments](Output& output) { return locate(*arguments, output); };
}

}  // namespace qrv::cli
