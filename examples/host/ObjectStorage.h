#pragma once

#include <common/common.h>

#include <vector>

/// Keeps every stored version, drawings too, as a plain file that is named by its digest. So a
/// version is kept once however often it is stored, and a damaged one is noticed when it is read.
class ObjectStorage final : public common::FileStorage {
public:
    /// Keeps the file `file`, which may lie anywhere, and gives the storage URL of its contents.
    Expected<OdString> keep(const common::RootPath& root, const OdString& file);

    // The operations of the interface, in its order. `merge`, `inFileUpdate` and `getLocalChanges`
    // stay the library's: they decide, the ones below only move bytes.
    Expected<OdString> store(const common::RootPath& root, const OdString& path) override;
    Expected<bool> contains(const common::RootPath& root, const OdString& url) override;
    Expected<void> exportTo(const common::RootPath& root, const OdString& url,
                            const OdString& target) override;
    Expected<common::DiffHandles> compare(const common::RootPath& root, const OdString& url,
                                          const OdString& otherUrl) override;
    Expected<bool> restore(const common::RootPath& root, const OdString& url,
                           const OdString& path) override;
    Expected<void> remove(const common::RootPath& root, const OdString& url) override;
    Expected<void> verify(const common::RootPath& root, const OdString& url) override;
    Expected<std::vector<OdString>> revisions(const common::RootPath& root,
                                              const OdString& url) override;
};
