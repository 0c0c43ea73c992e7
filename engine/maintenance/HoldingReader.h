#pragma once

#include <common/base/Expected.h>
#include <engine/maintenance/Holdings.h>
#include <engine/repository/Repository.h>
#include <engine/storage/FrameStore.h>
#include <engine/storage/PackFile.h>
#include <engine/storage/Packs.h>
#include <engine/storage/VersionReader.h>

#include <cstdint>
#include <memory>
#include <optional>

namespace qrv {

/// Reads contents from one particular place of those in which they lie. What was opened last stays
/// open.
class HoldingReader {
public:
    /// Both must outlive this.
    HoldingReader(Repository& repository, const Holdings& holdings);

    /// Fails when they are not there, or damaged. May throw `DatabaseError`.
    Expected<std::unique_ptr<VersionReader>> open(const Holding& holding);

private:
    Expected<std::unique_ptr<VersionReader>> openPacked(const PackReader& pack,
                                                        const DigestBytes& digest);
    Expected<std::unique_ptr<VersionReader>> openFrame(std::uint32_t holder,
                                                       const std::string& digest);

    Repository& repository_;
    const Holdings& holdings_;
    Packs packs_;
    std::optional<PackFile> oldPack_;
    std::unique_ptr<FrameStore> store_;
    std::uint32_t storeHolder_ = 0;
};

}  // namespace qrv
