#pragma once

#include <engine/storage/HostStorage.h>

#include <memory>
#include <string>
#include <vector>

namespace qrv {

class ObjectFolder;

/// Keeps files as they are, each contents once, as `.qrv/objects/<digest>`: read-only, written
/// beside its name and renamed, so that a name always stands for the whole contents. What `gc` has
/// packed is found in the pack (PackFile.h).
///
/// Contents are copied, or share blocks where the file system can; a working file is never a hard
/// link to an object. Memory does not grow with the size of the files. What is no regular file is
/// no object: it is not followed, and the contents are stored anew in its place.
class ObjectStorage : public HostStorage {
public:
    ObjectStorage();
    ObjectStorage(const ObjectStorage&) = delete;
    ObjectStorage& operator=(const ObjectStorage&) = delete;
    /// What was stored and not flushed is gone.
    ~ObjectStorage() override;

    /// The file is read once: hashed while it is copied. The object is found at once, but has its
    /// name, and is safe on the disk, only after `flush`.
    ///
    /// An object of that digest whose size is another is damaged, and replaced. The first call
    /// removes what processes that were killed more than a day ago left among the objects; by age,
    /// for on a network share another machine's processes write there as well.
    Expected<StoredFile> storeFile(const common::RootPath& root, const RelativePath& path) override;
    /// Hands all objects stored since the last call over to the disk, in one step, and gives them
    /// their names. After a failure each of them is there as a whole or not at all, and those that
    /// are not are forgotten.
    Expected<void> flush(const common::RootPath& root);

    Expected<std::unique_ptr<VersionReader>> open(const common::RootPath& root,
                                                  const OdString& url) override;
    Expected<bool> renew(const common::RootPath& root, const OdString& url) override;
    Expected<bool> contains(const common::RootPath& root, const OdString& url) override;
    /// Forgets the object, also in the pack, where a version that is kept as a difference from it
    /// is written anew first. One that is not there is no error.
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

    std::unique_ptr<Implementation> implementation_;
};

}  // namespace qrv
