#include <engine/base/Digest.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/Layout.h>
#include <engine/repository/MetadataFiles.h>
#include <engine/storage/PackRows.h>
#include <sys/TemporaryName.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace qrv {

namespace {

constexpr std::string_view storeEnding = layout::storeEnding;
constexpr std::string_view packEnding = layout::packEnding;
constexpr std::string_view journalEnding = "-journal";

/// A folder below the root, and the names in it, ordered.
struct Listing {
    sys::Folder folder;
    std::vector<std::string> names;
};

sys::Outcome<Listing> listing(const sys::Folder& root, const std::string& relative) {
    sys::Outcome<sys::Folder> folder = root.openFolder(relative);
    if (!folder)
        return folder.error();
    sys::Outcome<std::vector<std::string>> names = folder->list();
    if (!names)
        return names.error();
    return Listing{.folder = std::move(*folder), .names = std::move(*names)};
}

/// Nothing when there is no such folder.
Expected<std::optional<Listing>> listingIn(const common::RootPath& root, const sys::Folder& folder,
                                           const OdString& relative) {
    sys::Outcome<Listing> listed = listing(folder, relative.toNarrow());
    if (listed)
        return std::optional(std::move(*listed));
    if (listed.error() == std::errc::no_such_file_or_directory)
        return std::optional<Listing>();
    return systemFailure(tr(L"The folder '%ls' cannot be opened: %ls"), root.pathTo(relative),
                         listed.error());
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
    return isDigest(digest) ? std::optional(digest) : std::nullopt;
}

std::optional<OdString> storeOf(const std::string& name) {
    if (!name.ends_with(storeEnding))
        return std::nullopt;
    const OdString store = OdString::fromNarrow(name.substr(0, name.size() - storeEnding.size()));
    return isStoreName(store) ? std::optional(store) : std::nullopt;
}

std::optional<OdString> packOf(const std::string& name) {
    if (!name.ends_with(packEnding))
        return std::nullopt;
    const std::string pack = name.substr(0, name.size() - packEnding.size());
    return isPackName(pack) ? std::optional(OdString::fromNarrow(pack)) : std::nullopt;
}

/// The journal of a store belongs to it.
bool isJournal(const std::string& name, const std::vector<std::string>& names) {
    if (!name.ends_with(journalEnding))
        return false;
    const std::string store = name.substr(0, name.size() - journalEnding.size());
    return storeOf(store) && std::binary_search(names.begin(), names.end(), store);
}

/// Sorts what is in one of the folders; `nameOf` knows what belongs there.
template <class NameOf>
Expected<void> listFolder(const common::RootPath& root, const sys::Folder& folder,
                          const OdString& relative, NameOf nameOf, std::vector<MetadataFile>& known,
                          MetadataFiles& all) {
    const Expected<std::optional<Listing>> listed = listingIn(root, folder, relative);
    if (!listed)
        return listed.error();
    if (!*listed)
        return {};
    const std::vector<std::string>& names = (*listed)->names;
    for (const std::string& entry : names) {
        const OdString path = pathIn(relative, entry);
        const std::optional<OdString> name = nameOf(entry);
        const sys::Outcome<sys::FileStatus> status = (*listed)->folder.status(entry);
        // Another process has removed it since.
        if (!status && sys::meansAbsent(status.error()))
            continue;
        if (!status)
            return systemFailure(tr(L"'%ls' cannot be read: %ls"), path, status.error());
        const std::optional<MetadataFile> file = regularFile(*status, name.value_or(path));
        if (file && name)
            known.push_back(*file);
        else if (file && sys::isTemporaryName(entry))
            all.leftovers.push_back(*file);
        else if (!isJournal(entry, names))
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
    if (Expected<void> listed =
            listFolder(root, folder, OdString(layout::packsFolder), packOf, all.packs, all);
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
    const Expected<std::optional<Listing>> listed = listingIn(root, folder, relative);
    if (!listed || !*listed)
        return leftovers;
    for (const std::string& name : (*listed)->names) {
        const OdString path = pathIn(relative, name);
        if (!sys::isTemporaryName(name))
            continue;
        const sys::Outcome<sys::FileStatus> status = (*listed)->folder.status(name);
        const std::optional<MetadataFile> file = status ? regularFile(*status, path) : std::nullopt;
        if (file)
            leftovers.push_back(*file);
    }
    return leftovers;
}

}  // namespace qrv
