#include <engine/base/Digest.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/Layout.h>
#include <engine/repository/MetadataFiles.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace qrv {

namespace {

constexpr std::string_view storeEnding = layout::storeEnding;
constexpr std::string_view journalEnding = "-journal";

/// The names in the folder, ordered; none when there is no such folder.
Expected<std::vector<std::string>> namesIn(const common::RootPath& root, const sys::Folder& folder,
                                           const OdString& relative) {
    sys::Outcome<std::vector<std::string>> names = folder.list(relative.toNarrow());
    if (names)
        return std::move(*names);
    if (names.error() == std::errc::no_such_file_or_directory)
        return std::vector<std::string>();
    return systemFailure(tr(L"The folder '%ls' cannot be opened: %ls"), root.pathTo(relative),
                         names.error());
}

bool isLeftover(std::string_view name) {
    return name.starts_with('.') && name.ends_with(".qrv-tmp");
}

OdString pathIn(const OdString& folder, const std::string& name) {
    const OdString text = OdString::fromNarrow(name);
    return folder == OdString(L".") ? text : folder + L'/' + text;
}

/// A file of that status, which is to be called `name`; nothing when it is no regular one.
std::optional<MetadataFile> regularFile(const sys::FileStatus& status, const OdString& name) {
    if (status.kind != sys::FileKind::regular)
        return std::nullopt;
    return MetadataFile{
        .name = name, .sizeBytes = status.sizeBytes, .modifiedNs = status.modifiedNs};
}

std::optional<OdString> digestOf(const std::string& name) {
    const OdString digest = OdString::fromNarrow(name);
    return CheckedUrl::check(objectUrl(digest)) ? std::optional(digest) : std::nullopt;
}

std::optional<OdString> storeOf(const std::string& name) {
    if (!name.ends_with(storeEnding))
        return std::nullopt;
    const OdString store = OdString::fromNarrow(name.substr(0, name.size() - storeEnding.size()));
    const OdString anyDigest(std::wstring(digestLength, L'0'));
    return CheckedUrl::check(drawingUrl(store, anyDigest)) ? std::optional(store) : std::nullopt;
}

/// The journal of a store belongs to it.
bool isJournal(const std::string& name, const std::vector<std::string>& names) {
    if (!name.ends_with(journalEnding))
        return false;
    const std::string store = name.substr(0, name.size() - journalEnding.size());
    return storeOf(store) && std::binary_search(names.begin(), names.end(), store);
}

/// Sorts what is in one of the two folders; `nameOf` knows what belongs there.
template <class NameOf>
Expected<void> listFolder(const common::RootPath& root, const sys::Folder& folder,
                          const OdString& relative, NameOf nameOf, std::vector<MetadataFile>& known,
                          MetadataFiles& all) {
    const Expected<std::vector<std::string>> names = namesIn(root, folder, relative);
    if (!names)
        return names.error();
    for (const std::string& entry : *names) {
        const OdString path = pathIn(relative, entry);
        const std::optional<OdString> name = nameOf(entry);
        const sys::Outcome<sys::FileStatus> status = folder.status(path.toNarrow());
        // Another process has removed it since.
        if (!status && sys::meansAbsent(status.error()))
            continue;
        if (!status)
            return systemFailure(tr(L"'%ls' cannot be read: %ls"), path, status.error());
        const std::optional<MetadataFile> file = regularFile(*status, name.value_or(path));
        if (file && name)
            known.push_back(*file);
        else if (file && isLeftover(entry))
            all.leftovers.push_back(*file);
        else if (!isJournal(entry, *names))
            all.strays.push_back(path);
    }
    return {};
}

}  // namespace

Expected<MetadataFiles> listMetadata(const common::RootPath& root, const sys::Folder& folder) {
    MetadataFiles all;
    if (Expected<void> listed =
            listFolder(root, folder, OdString(layout::objectsFolder), digestOf, all.objects, all);
        !listed)
        return std::move(listed).error();
    if (Expected<void> listed =
            listFolder(root, folder, OdString(layout::storesFolder), storeOf, all.stores, all);
        !listed)
        return std::move(listed).error();
    for (const char* const other :
         {layout::metadataFolder, layout::commitRecordsFolder, layout::propertiesFolder}) {
        const std::vector<MetadataFile> found = leftoversIn(root, folder, OdString(other));
        all.leftovers.insert(all.leftovers.end(), found.begin(), found.end());
    }
    std::sort(all.leftovers.begin(), all.leftovers.end(),
              [](const auto& left, const auto& right) { return left.name < right.name; });
    return all;
}

std::vector<MetadataFile> leftoversIn(const common::RootPath& root, const sys::Folder& folder,
                                      const OdString& relative) {
    std::vector<MetadataFile> leftovers;
    const Expected<std::vector<std::string>> names = namesIn(root, folder, relative);
    if (!names)
        return leftovers;
    for (const std::string& name : *names) {
        const OdString path = pathIn(relative, name);
        if (!isLeftover(name))
            continue;
        const sys::Outcome<sys::FileStatus> status = folder.status(path.toNarrow());
        const std::optional<MetadataFile> file = status ? regularFile(*status, path) : std::nullopt;
        if (file)
            leftovers.push_back(*file);
    }
    return leftovers;
}

}  // namespace qrv
