#pragma once

#include <engine/history/History.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/storage/Storages.h>
#include <tests/engine/storage/FrameStoreFile.h>
#include <tests/engine/storage/StorageFolder.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <filesystem>
#include <optional>
#include <string>

namespace qrv_test {

/// Puts stored contents where earlier programs put them: drawings into a store of their own, and
/// everything else among the objects.
inline void keepAsBefore(const TemporaryFolder& folder, const OdString& url,
                         const std::string& contents) {
    const qrv::CheckedUrl checked = qrv::CheckedUrl::check(url).value();
    if (checked.isDrawing())
        return oldStoreOf(folder.text(), checked.store().toNarrow(), {contents});
    const auto object = folder / (".qrv/objects/" + checked.digest().toNarrow());
    writeFile(object, contents);
    std::filesystem::permissions(object, std::filesystem::perms(0444));
}

/// Makes of the packs what earlier programs had in their place. What no commit names is lost.
inline void toOldForms(const TemporaryFolder& folder) {
    const common::RootPath root = common::RootPath::get(folder.text(), false).value();
    qrv::Packs packs(*sys::Folder::open(folder.path().string()));
    qrv::Storages storages([](const OdString&) { return OdString(); });
    qrv::History history = qrv::History::open(root, qrv::Database::Access::readOnly);
    for (std::int64_t number = 1;; ++number) {
        const std::optional<qrv::CommitEntry> commit = history.commitByNumber(number);
        if (!commit)
            break;
        for (const qrv::FileDelta& delta : history.deltas(commit->hash)) {
            const OdString digest = qrv::digestOfUrl(delta.url);
            if (!digest.isEmpty() && packs.has(qrv::toDigestBytes(digest.toNarrow())))
                keepAsBefore(folder, delta.url,
                             readVersion(storages.ofUrl(delta.url), root, delta.url));
        }
    }
    std::filesystem::remove_all(folder / ".qrv/packs");
}

/// What is stored under that URL.
inline std::string storedContents(const TemporaryFolder& folder, const OdString& url) {
    qrv::Storages storages([](const OdString&) { return OdString(); });
    return readVersion(storages.ofUrl(url), common::RootPath::get(folder.text(), false).value(),
                       url);
}

}  // namespace qrv_test
