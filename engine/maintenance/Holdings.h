#pragma once

#include <engine/base/DigestBytes.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/repository/MetadataFiles.h>
#include <engine/repository/Repository.h>
#include <engine/storage/PackReader.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qrv {

/// Where contents lie: one file of them, or the folder of the plain objects.
struct Holder {
    enum class Kind {
        pack,     ///< `.qrv/packs/<name>.pack`
        objects,  ///< the plain objects that somebody names
        oldPack,  ///< `.qrv/objects.pack`
        store,    ///< `.qrv/tf/<name>.tf`
    };

    Kind kind = Kind::pack;
    std::string name = {};
    std::int64_t modifiedNs = 0;
    /// Of a pack alone.
    std::shared_ptr<const PackReader> pack = nullptr;
    /// Whether what is in it is to come into new packs, so that it can go.
    bool isTakenUp = false;
};

/// Some contents in one of the holders, by its place in their list.
struct Holding {
    DigestBytes digest = {};
    std::int64_t sizeBytes = 0;
    std::uint32_t holder = 0;
};

/// Everything that a repository keeps and that can be read as far as its tables tell.
struct Holdings {
    std::vector<Holder> holders;
    /// Ordered by digest, and for each digest in the order of the holders.
    std::vector<Holding> all;

    /// What of the contents is named is told by `named`; those of unnamed contents that are not
    /// older than the age at which they are dropped are needed, too.
    bool isNeeded(const Holding& holding, const NamedVersions& named) const;
};

/// Two weeks: so long what nobody names may wait for the commit that names it.
bool isForgotten(std::int64_t modifiedNs);

/// Lists what the repository keeps, and decides which holders are taken up: all but the packs of
/// earlier collections, as long as there are few of these, nothing in them is to be dropped, and
/// they build on nothing that moves; and but packs of new contents that nobody names yet. Where
/// nothing else is to be done, none is. `problems` gets what cannot be read, and stays.
Holdings holdingsOf(Repository& repository, const MetadataFiles& files, const NamedVersions& named,
                    std::vector<OdString>& problems);

}  // namespace qrv
