#pragma once

#include <engine/storage/FrameStore.h>
#include <engine/storage/HostStorage.h>
#include <engine/storage/PreviousUrl.h>
#include <sys/Folder.h>

#include <memory>
#include <optional>
#include <vector>

namespace qrv {

/// Keeps drawings in packs (Packs.h), by the digest of their contents: equal contents once. The
/// name of the store in their URLs only says which drawings continue each other. What earlier
/// programs have kept in the store of that name, `.qrv/tf/<store>.tf`, one SQLite file a drawing,
/// is found there (docs/formats/drawing-store.md).
class DrawingStorage : public HostStorage {
public:
    explicit DrawingStorage(PreviousUrl previousUrl,
                            std::shared_ptr<PacksByRoot> packs = std::make_shared<PacksByRoot>());

    /// A drawing without a previous version gets the store that is named after its path.
    Expected<StoredFile> storeFile(const common::RootPath& root, const RelativePath& path) override;
    Expected<std::unique_ptr<VersionReader>> open(const common::RootPath& root,
                                                  const OdString& url) override;
    Expected<bool> renew(const common::RootPath& root, const OdString& url) override;
    Expected<bool> contains(const common::RootPath& root, const OdString& url) override;
    /// Forgets the revision, whatever store names it; what is kept as a difference from it is
    /// written anew first. One that is not there is no error.
    Expected<void> remove(const common::RootPath& root, const OdString& url) override;
    /// Those in the old store, oldest first, and this one: versions in packs do not know each
    /// other.
    Expected<std::vector<OdString>> revisions(const common::RootPath& root,
                                              const OdString& url) override;

    // What earlier programs have kept.

    /// The URLs of all revisions in the store of that name, oldest first; none when there is no
    /// such store.
    Expected<std::vector<OdString>> revisionsIn(const common::RootPath& root, const OdString& name);
    /// The store of that name, for reading all of it; null when there is none. Throws
    /// `DatabaseError`.
    Expected<std::unique_ptr<FrameStore>> openStore(const common::RootPath& root,
                                                    const OdString& store);
    /// Removes the store of that name with all of its revisions.
    Expected<void> removeStore(const common::RootPath& root, const OdString& store);

private:
    Expected<std::optional<PackedContents>> placeInPacks(const common::RootPath& root,
                                                         const OdString& url);
    Expected<bool> renewOld(const common::RootPath& root, const OdString& url);
    Expected<bool> containsOld(const common::RootPath& root, const OdString& url);
    template <class Answer, class Call>
    Answer onStore(const common::RootPath& root, const OdString& store, Database::Access access,
                   Answer ifMissing, Call call);
    template <class Answer, class Call>
    Answer onRevision(const common::RootPath& root, const OdString& url, Database::Access access,
                      Answer ifMissing, Call call);

    PreviousUrl previousUrl_;
};

}  // namespace qrv
