#pragma once

#include <engine/storage/HostStorage.h>
#include <engine/storage/PreviousUrl.h>

#include <memory>
#include <string>
#include <vector>

namespace qrv {

class ObjectFolder;

/// Keeps files of every kind but drawings, each contents once, by its digest: in packs (Packs.h),
/// or, where the file system lets files share blocks, large ones as `.qrv/objects/<digest>`:
/// read-only, and a name always stands for the whole contents. What earlier programs have kept as
/// such a file, or packed, is found there.
///
/// A working file is never a hard link to an object. What is no regular file is no object: it is
/// not followed, and the contents are stored anew.
class ObjectStorage : public HostStorage {
public:
    explicit ObjectStorage(
        PreviousUrl previousUrl = [](const OdString&) { return OdString(); },
        std::shared_ptr<PacksByRoot> packs = std::make_shared<PacksByRoot>());
    ObjectStorage(const ObjectStorage&) = delete;
    ObjectStorage& operator=(const ObjectStorage&) = delete;
    /// What was stored and not flushed is gone.
    ~ObjectStorage() override;

    /// An object of that digest whose size is another is damaged, and stored anew.
    Expected<StoredFile> storeFile(const common::RootPath& root, const RelativePath& path) override;
    Expected<void> flush(const common::RootPath& root) override;

    Expected<std::unique_ptr<VersionReader>> open(const common::RootPath& root,
                                                  const OdString& url) override;
    Expected<bool> renew(const common::RootPath& root, const OdString& url) override;
    Expected<bool> contains(const common::RootPath& root, const OdString& url) override;
    /// Forgets the object, wherever it lies; what is kept as a difference from it is written anew
    /// first. One that is not there is no error.
    Expected<void> remove(const common::RootPath& root, const OdString& url) override;
    /// Removes the plain file of an object; in the pack it stays.
    Expected<void> removePlain(const common::RootPath& root, const std::string& digest);
    /// Only this one, if it is kept: equal contents are kept once, and objects do not know each
    /// other.
    Expected<std::vector<OdString>> revisions(const common::RootPath& root,
                                              const OdString& url) override;

private:
    struct Implementation;

    Expected<ObjectFolder*> objectsOf(const common::RootPath& root);
    template <class Answer, class Call>
    Answer onObject(const common::RootPath& root, const OdString& url, Answer ifDrawing, Call call);

    PreviousUrl previousUrl_;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace qrv
