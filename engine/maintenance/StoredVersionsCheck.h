#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/database/Database.h>
#include <engine/maintenance/Findings.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/MetadataFiles.h>
#include <engine/storage/PackFile.h>
#include <engine/storage/Packs.h>
#include <engine/storage/Storages.h>
#include <engine/storage/VersionReader.h>
#include <platform/kernel/OdString.h>

#include <memory>
#include <string>
#include <vector>

namespace qrv {

/// Reads every version that the storages keep, each once, and tells which of those that somebody
/// names are lost or damaged.
class StoredVersionsCheck {
public:
    /// All of these must outlive this.
    StoredVersionsCheck(const RepositoryPlace& place, const NamedVersions& named, Work& progress,
                        Findings& findings);

    void checkAll(const MetadataFiles& files);
    /// Tells what was found, and which files it is as far as `history` knows; null when there is
    /// none.
    void tellDamage(History* history);

private:
    bool isFirstLook(const OdString& url);
    void checkVersion(const OdString& url);
    void checkContents(const OdString& url,
                       const Expected<std::unique_ptr<VersionReader>>& version);
    void checkObjects(const MetadataFiles& files);
    void checkPack();
    void checkPacked(PackFile& pack, const std::string& digest, const OdString& url);
    void checkPackOfNow(const std::string& name);
    void checkInPack(const PackReader& pack, const PackEntry& entry);
    void checkStore(const OdString& name);
    void addDamage(const OdString& url, const OdString& problem);
    void addDatabaseDamage(Database& database);

    const RepositoryPlace& place_;
    const NamedVersions& named_;
    Work& progress_;
    Findings& findings_;
    Storages storages_;
    Packs packs_;
    /// Of each named version, whether it was looked at.
    std::vector<bool> isChecked_;
    struct Damage {
        OdString url;
        OdString problem;
    };
    std::vector<Damage> damages_;
};

}  // namespace qrv
