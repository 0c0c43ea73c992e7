#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/storage/PackFile.h>
#include <sys/Folder.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

constexpr FrameLayout packLayout = {.applicationId = 0x71727670,  // "qrvp"
                                    .longestChain = 8,
                                    .longestSpanBytes = std::int64_t{256} << 20,
                                    .worthPercent = 50};

[[noreturn]] void fail(const OdString& path, const OdString& cause) {
    throw DatabaseError(OdString::format(tr(L"'%ls' cannot be used: %ls"), printable(path), cause));
}

sys::Folder folderOf(const common::RootPath& root) {
    sys::Outcome<sys::Folder> folder = sys::Folder::open(root.path().toNarrow());
    if (!folder)
        fail(root.path(), causeOf(folder.error()));
    return std::move(*folder);
}

bool isThere(const sys::Folder& folder, const OdString& path) {
    const sys::Outcome<sys::FileStatus> status = folder.status(layout::oldPackPath);
    if (!status && !sys::meansAbsent(status.error()))
        fail(path, causeOf(status.error()));
    return static_cast<bool>(status);
}

}  // namespace

PackFile::PackFile(const sys::Folder& folder, const OdString& path, Database::Access access)
    : frames_(std::make_shared<Database>(folder, layout::oldPackPath, path, access), access,
              packLayout) {
}

OdString PackFile::pathOf(const common::RootPath& root) {
    return root.pathTo(OdString(layout::oldPackPath));
}

std::optional<PackFile> PackFile::open(const common::RootPath& root) {
    return open(folderOf(root), root);
}

std::optional<PackFile> PackFile::open(const sys::Folder& folder, const common::RootPath& root) {
    if (!isThere(folder, pathOf(root)))
        return std::nullopt;
    return PackFile(folder, pathOf(root), Database::Access::readWrite);
}

PackFile PackFile::openForChange(const common::RootPath& root) {
    return openForChange(folderOf(root), root);
}

PackFile PackFile::openForChange(const sys::Folder& folder, const common::RootPath& root) {
    isThere(folder, pathOf(root));
    return {folder, pathOf(root), Database::Access::create};
}

bool PackFile::contains(const std::string& digest) {
    return frames_.find(digest).has_value();
}

Expected<std::unique_ptr<VersionReader>> PackFile::read(const std::string& digest) {
    const std::optional<Frame> frame = frames_.find(digest);
    if (!frame)
        return std::unique_ptr<VersionReader>();
    return frames_.open(*frame);
}

std::vector<std::string> PackFile::digests() {
    std::vector<std::string> digests;
    for (Frame& frame : frames_.frames())
        digests.push_back(std::move(frame.digest));
    std::sort(digests.begin(), digests.end());
    return digests;
}

std::int64_t PackFile::storedBytes(const std::string& digest) {
    const std::optional<Frame> frame = frames_.find(digest);
    return frame ? frames_.storedBytes(*frame) : 0;
}

Expected<void> PackFile::add(const std::string& digest, VersionReader& contents,
                             const std::optional<std::string>& base) {
    if (contains(digest))
        return {};
    std::optional<Frame> previous;
    if (base)
        previous = frames_.find(*base);
    Expected<FrameStore::Added> added = frames_.add(contents, previous);
    if (!added)
        return std::move(added).error();
    if (added->frame.digest == digest)
        return {};
    if (added->isNew) {
        if (Expected<void> removed = frames_.remove(added->frame); !removed)
            return removed;
    }
    return ErrorMessage{
        OdString::format(tr(L"The object %ls cannot be packed: its contents have another digest"),
                         OdString::fromNarrow(digest))};
}

Expected<void> PackFile::remove(const std::vector<std::string>& digests) {
    DatabaseTransaction transaction(database());
    for (const std::string& digest : digests) {
        const std::optional<Frame> frame = frames_.find(digest);
        if (!frame)
            continue;
        if (Expected<void> removed = frames_.remove(*frame); !removed)
            return removed;
    }
    transaction.commit();
    return {};
}

Database& PackFile::database() {
    return frames_.database();
}

}  // namespace qrv
