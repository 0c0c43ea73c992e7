#pragma once

#include <common/repository/RootPath.h>
#include <engine/base/Digest.h>
#include <engine/storage/ObjectStorage.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

namespace qrv_test {

/// A repository in a folder of its own, and its object storage.
class StorageFolder : public testing::Test {
protected:
    StorageFolder() : root(*common::RootPath::get(folder.text(), true)) { ::umask(022); }

    std::filesystem::path operator/(const std::string& relative) const { return folder / relative; }

    /// Stores and flushes a working file of those contents.
    OdString stored(const std::string& path, const std::string& contents) {
        writeFile(folder / path, contents);
        const OdString url = storage.store(root, OdString::fromNarrow(path)).value();
        storage.flush(root).value();
        return url;
    }
    /// The same as a plain file among the objects, as earlier programs kept it.
    OdString storedPlain(const std::string& contents) {
        const OdString url = urlOf(contents);
        writeFile(objectOf(url), contents);
        std::filesystem::permissions(objectOf(url), std::filesystem::perms(0444));
        return url;
    }
    std::filesystem::path objectOf(const OdString& url) const {
        return folder / (".qrv/objects/" + url.right(64).toNarrow());
    }
    static OdString urlOf(const std::string& contents) {
        return L"po:" + OdString::fromNarrow(qrv::Digest::of(contents));
    }
    std::vector<std::string> objects() const { return listed(".qrv/objects"); }
    std::vector<std::string> packs() const { return listed(".qrv/packs"); }
    std::uint32_t permissions(const std::filesystem::path& file) const {
        return static_cast<std::uint32_t>(std::filesystem::status(file).permissions());
    }

private:
    std::vector<std::string> listed(const std::string& relative) const {
        return std::filesystem::exists(folder / relative) ? listTree(folder / relative)
                                                          : std::vector<std::string>();
    }

protected:
    TemporaryFolder folder;
    common::RootPath root;
    qrv::ObjectStorage storage;
};

/// The whole version.
inline std::string readVersion(qrv::HostStorage& storage, const common::RootPath& root,
                               const OdString& url) {
    const auto version = storage.open(root, url).value();
    std::string contents(static_cast<std::size_t>(version->sizeBytes()) + 1, '\0');
    contents.resize(version->read(contents).value());
    return contents;
}

}  // namespace qrv_test
