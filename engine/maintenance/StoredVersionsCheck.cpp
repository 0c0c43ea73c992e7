#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/maintenance/StoredVersionsCheck.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/storage/ReadToEnd.h>
#include <engine/storage/StorageMessages.h>
#include <platform/ut/Paths.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

namespace qrv {

namespace {

OdString withName(const OdString& problem, const VersionName& name) {
    const OdString path = printable(name.path);
    if (name.commit == 0)
        return OdString::format(tr(L"%ls (it is '%ls' of an interrupted command)"), problem, path);
    if (name.others == 0)
        return OdString::format(tr(L"%ls (it is '%ls' in commit %i)"), problem, path, name.commit);
    return OdString::format(tr(L"%ls (it is '%ls' in commit %i, and named %i times more)"), problem,
                            path, name.commit, name.others);
}

}  // namespace

StoredVersionsCheck::StoredVersionsCheck(const RepositoryPlace& place, const NamedVersions& named,
                                         CheckDepth depth, Work& progress, Findings& findings)
    : place_(place),
      named_(named),
      depth_(depth),
      progress_(progress),
      findings_(findings),
      storages_([](const OdString&) { return OdString(); }),
      isChecked_(named.size()) {
    storages_.use(place.root, place.folder);
}

void StoredVersionsCheck::checkAll(const MetadataFiles& files) {
    checkPacks();
    checkObjects(files);
    findings_.attempt([this] { checkOldPack(); });
    for (const MetadataFile& store : files.stores)
        findings_.attempt([this, &store] { checkStore(store.name); });
    for (std::size_t which = 0; which < named_.size(); ++which) {
        if (!isChecked_[which])
            checkVersion(named_.url(which));
    }
}

void StoredVersionsCheck::checkPacks() {
    Packs packs(place_.folder);
    const Expected<std::vector<std::string>> names = packs.names();
    if (!names)
        return findings_.addProblem(names.error().message);
    for (const std::string& name : *names) {
        const Expected<std::shared_ptr<const PackReader>> pack = packs.openPack(name);
        if (pack)
            checkPack(packs, **pack);
        else
            findings_.addProblem(pack.error().message);
    }
}

void StoredVersionsCheck::checkPack(Packs& packs, const PackReader& pack) {
    const Expected<std::vector<OdString>> damage = pack.damage();
    const Expected<PackContents> all = damage ? contentsOf(pack) : damage.error();
    if (!all)
        return findings_.addProblem(all.error().message);
    for (const OdString& problem : *damage)
        findings_.addProblem(problem);
    for (const PackedContents& contents : all->contents) {
        const NamedVersions::Range range = named_.ofDigest(contents.digest);
        const bool isDrawing = range.count > 0 && named_.isDrawing(range.first);
        ++(isDrawing ? findings_.counts().drawingVersions : findings_.counts().packedObjects);
        std::fill_n(isChecked_.begin() + static_cast<std::ptrdiff_t>(range.first), range.count,
                    true);
    }
    if (depth_ == CheckDepth::contents)
        readContents(packs, *all);
}

// What the threads could not read is read again, for its message.
void StoredVersionsCheck::readContents(Packs& packs, const PackContents& all) {
    for (const std::size_t which : unreadable(all.contents, place_.folder)) {
        const PackedContents& contents = all.contents[which];
        const Expected<std::unique_ptr<VersionReader>> version = packs.open(contents);
        const Expected<void> whole = version ? readToEnd(**version) : version.error();
        if (!whole)
            addDamage(contents.digest, whole.error().message);
    }
    for (const PackedContents& contents : all.contents)
        progress_.add(contents.sizeBytes);
}

void StoredVersionsCheck::addDamage(const DigestBytes& digest, const OdString& problem) {
    const NamedVersions::Range range = named_.ofDigest(digest);
    for (std::size_t which = range.first; which < range.first + range.count; ++which)
        addDamage(named_.url(which), problem);
    if (range.count == 0)
        addDamage(OdString(), problem);
}

// What nobody names is met once.
bool StoredVersionsCheck::isFirstLook(const OdString& url) {
    const std::size_t which = named_.find(url);
    if (which == named_.size())
        return true;
    const bool isFirst = !isChecked_[which];
    isChecked_[which] = true;
    return isFirst;
}

void StoredVersionsCheck::checkVersion(const OdString& url) {
    if (!isFirstLook(url))
        return;
    const Expected<std::unique_ptr<VersionReader>> version =
        storages_.ofUrl(url).open(place_.root, url);
    if (version && *version == nullptr)
        addDamage(url, notKept(url).message);
    else
        checkContents(url, version);
}

void StoredVersionsCheck::checkContents(const OdString& url,
                                        const Expected<std::unique_ptr<VersionReader>>& version) {
    const bool isToBeRead = version && depth_ == CheckDepth::contents;
    const Expected<void> whole = !version     ? version.error()
                                 : isToBeRead ? readToEnd(**version)
                                              : Expected<void>();
    if (!whole)
        addDamage(url, whole.error().message);
    progress_.add(version ? (*version)->sizeBytes() : 0);
}

void StoredVersionsCheck::addDamage(const OdString& url, const OdString& problem) {
    damages_.push_back({.url = url, .problem = problem});
}

void StoredVersionsCheck::tellDamage(History* history) {
    std::vector<OdString> urls;
    for (const Damage& damage : damages_)
        urls.push_back(damage.url);
    std::map<OdString, VersionName> names;
    if (history != nullptr && !urls.empty())
        names = namesOf(urls, *history);
    for (const Damage& damage : damages_) {
        const auto name = names.find(damage.url);
        findings_.addProblem(name == names.end() ? damage.problem
                                                 : withName(damage.problem, name->second));
    }
}

void StoredVersionsCheck::checkObjects(const MetadataFiles& files) {
    for (const MetadataFile& object : files.objects)
        checkVersion(objectUrl(object.name));
    findings_.counts().objects = static_cast<std::int64_t>(files.objects.size());
}

void StoredVersionsCheck::addDatabaseDamage(Database& database) {
    for (const OdString& line : ut::splitByChar(database.damage(), L"\n", false))
        findings_.addProblem(OdString::format(tr(L"'%ls' is damaged: %ls"),
                                              printable(database.path()), printable(line)));
}

void StoredVersionsCheck::checkOldPack() {
    std::optional<PackFile> pack = PackFile::open(place_.folder, place_.root);
    if (!pack)
        return;
    addDatabaseDamage(pack->database());
    for (const std::string& digest : pack->digests()) {
        const OdString url = objectUrl(OdString::fromNarrow(digest));
        isFirstLook(url);
        ++findings_.counts().packedObjects;
        if (depth_ == CheckDepth::contents)
            findings_.attempt([this, &pack, &digest, &url] { checkPacked(*pack, digest, url); });
    }
}

void StoredVersionsCheck::checkPacked(PackFile& pack, const std::string& digest,
                                      const OdString& url) {
    const Expected<std::unique_ptr<VersionReader>> version = pack.read(digest);
    if (!version || *version != nullptr)
        checkContents(url, version);
}

// Oldest first, so that each drawing version finds what it builds on.
void StoredVersionsCheck::checkStore(const OdString& name) {
    const Expected<std::unique_ptr<FrameStore>> opened =
        storages_.drawings().openStore(place_.root, name);
    if (!opened)
        return findings_.addProblem(opened.error().message);
    if (*opened == nullptr)
        return;
    FrameStore& store = **opened;
    addDatabaseDamage(store.database());
    store.keepBases();
    for (const Frame& frame : store.frames()) {
        const OdString url = drawingUrl(name, OdString::fromNarrow(frame.digest));
        ++findings_.counts().drawingVersions;
        if (isFirstLook(url) && depth_ == CheckDepth::contents)
            findings_.attempt([&] { checkContents(url, store.open(frame)); });
    }
}

}  // namespace qrv
