#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/database/Database.h>
#include <engine/maintenance/Findings.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/maintenance/PackCheck.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/MetadataFiles.h>
#include <engine/storage/PackFile.h>
#include <engine/storage/PackReader.h>
#include <engine/storage/Packs.h>
#include <engine/storage/Storages.h>
#include <engine/storage/VersionReader.h>
#include <platform/kernel/OdString.h>

#include <memory>
#include <string>
#include <vector>

namespace qrv {

/// How closely a repository is looked at.
enum class CheckDepth {
    contents,   ///< all that is kept is read, and compared with its digest
    structure,  ///< the tables tell what is there
};

/// Looks at every version that the storages keep, each once, and tells which of those that somebody
/// names are lost or damaged.
class StoredVersionsCheck {
public:
    /// All of these must outlive this.
    StoredVersionsCheck(const RepositoryPlace& place, const NamedVersions& named, CheckDepth depth,
                        Work& progress, Findings& findings);

    void checkAll(const MetadataFiles& files);
    /// Tells what was found, and which files it is as far as `history` knows; null when there is
    /// none.
    void tellDamage(History* history);

private:
    bool isFirstLook(const OdString& url);
    void checkVersion(const OdString& url);
    void checkContents(const OdString& url,
                       const Expected<std::unique_ptr<VersionReader>>& version);
    void checkPacks();
    void checkPack(Packs& packs, const PackReader& pack);
    void readContents(Packs& packs, const PackContents& all);
    void addDamage(const DigestBytes& digest, const OdString& problem);
    void checkObjects(const MetadataFiles& files);
    void checkOldPack();
    void checkPacked(PackFile& pack, const std::string& digest, const OdString& url);
    void checkStore(const OdString& name);
    void addDamage(const OdString& url, const OdString& problem);
    void addDatabaseDamage(Database& database);

    const RepositoryPlace& place_;
    const NamedVersions& named_;
    CheckDepth depth_;
    Work& progress_;
    Findings& findings_;
    Storages storages_;
    /// Of each named version, whether it was looked at.
    std::vector<bool> isChecked_;
    struct Damage {
        OdString url;
        OdString problem;
    };
    std::vector<Damage> damages_;
};

}  // namespace qrv
