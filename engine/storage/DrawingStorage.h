#pragma once

#include <engine/storage/FrameStore.h>
#include <engine/storage/HostStorage.h>
#include <sys/Folder.h>

#include <functional>
#include <memory>
#include <vector>

namespace qrv {

/// Keeps drawings as `.qrv/tf/<store>.tf`, one SQLite file a drawing: a revision is a zstd frame
/// against the one that it continues, or one of its own where that saves nothing, and any revision
/// is restored from at most 16 frames. A revision is named by the digest of its contents, so equal
/// contents in one store are kept once. docs/formats/drawing-store.md describes the file.
///
/// A revision is safe on the disk when `storeFile` returns.
class DrawingStorage : public HostStorage {
public:
    /// Gives the storage URL of the version that a working file continues (its own in HEAD, or the
    /// one it was renamed from), or an empty text: the drawing then goes on in that version's
    /// store.
    using PreviousUrl = std::function<OdString(const OdString& path)>;

    explicit DrawingStorage(PreviousUrl previousUrl);

    /// A drawing without a previous version goes on in the store that is named after its path, and
    /// is kept against the newest revision there.
    Expected<StoredFile> storeFile(const common::RootPath& root, const RelativePath& path) override;
    Expected<std::unique_ptr<VersionReader>> open(const common::RootPath& root,
                                                  const OdString& url) override;
    Expected<bool> renew(const common::RootPath& root, const OdString& url) override;
    Expected<bool> contains(const common::RootPath& root, const OdString& url) override;
    /// Forgets the revision; the one that was kept as a difference from it is written anew first,
    /// in one transaction. One that is not there is no error.
    Expected<void> remove(const common::RootPath& root, const OdString& url) override;
    Expected<std::vector<OdString>> revisions(const common::RootPath& root,
                                              const OdString& url) override;

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
    template <class Answer, class Call>
    Answer onStore(const common::RootPath& root, const OdString& store, Database::Access access,
                   Answer ifMissing, Call call);
    template <class Answer, class Call>
    Answer onRevision(const common::RootPath& root, const OdString& url, Database::Access access,
                      Answer ifMissing, Call call);

    PreviousUrl previousUrl_;
};

}  // namespace qrv
