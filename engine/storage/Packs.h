#pragma once

#include <common/base/Expected.h>
#include <engine/base/Bytes.h>
#include <engine/base/DigestBytes.h>
#include <engine/storage/BlockReader.h>
#include <engine/storage/PackReader.h>
#include <engine/storage/PackSource.h>
#include <engine/storage/PackWriter.h>
#include <engine/storage/VersionReader.h>
#include <sys/Folder.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qrv {

/// The contents that a new difference is to be made against, by what the chain rule says.
struct NextBase {
    DigestBytes digest = {};
    /// Of the block that builds on it.
    std::uint8_t depth = 2;
    /// Of the block that builds on it, too.
    std::uint8_t roundStart = 1;
};

/// The packs of one repository, `.qrv/packs`: immutable files of compressed contents, found by
/// digest in whichever pack they lie. docs/formats/pack.md describes the files.
///
/// Many may read while one writes. A pack that is damaged, or that cannot be read, costs what lies
/// in it: a look-up goes on in the others, and only what is found nowhere is then an error that
/// says so.
class Packs {
public:
    /// Packs of the `ignored` names are as if they were gone.
    explicit Packs(sys::Folder root, std::vector<std::string> ignored = {});

    /// Where the contents lie; nothing when no pack has them.
    Expected<std::optional<PackedContents>> find(const DigestBytes& digest);
    /// Whether contents that are to be stored are here already, whole as far as the tables tell. A
    /// pack that cannot be read has nothing.
    bool has(const DigestBytes& digest);
    /// Null when no pack has them. Fails also when contents on which they build are missing, and
    /// when reading them takes more memory than there is.
    Expected<std::unique_ptr<VersionReader>> open(const DigestBytes& digest);
    /// The same for contents whose place is known.
    Expected<std::unique_ptr<VersionReader>> open(const PackedContents& contents);
    /// What contents that continue those of `previous` are to be kept against: these, or, where
    /// their chain is full, those at the beginning of its last round, so that one frame that stands
    /// alone serves 136 versions with chains of 16. Nothing when they are in no pack, or the chain
    /// cannot go on.
    std::optional<NextBase> baseAfter(const DigestBytes& previous);
    /// Lets the packs in which they lie count as new again, so that `gc` does not take them for
    /// long unused. False when that was not possible.
    bool renew(const PackedContents& contents);

    /// The pack for new contents; it is found in at once, but has its name, and is safe on the
    /// disk, only after `flush`.
    PackWriter& writer();
    /// Ends the pack that is being written when it is full, so that `writer` begins another.
    Expected<void> makeRoom();
    /// Where this would leave more than eight packs of about one size, the new one takes them up,
    /// so that there are few however many commands have stored.
    Expected<void> flush();
    /// Forgets what was added and not flushed.
    void giveUp() { writer_.reset(); }

    /// Forgets contents: the packs in which they lie, or that build on them, are written anew
    /// without them. Contents that are nowhere are no error. Fails when something that builds on
    /// them cannot be read; then they stay.
    Expected<void> remove(const DigestBytes& digest);

    /// The packs as they are named now, in the order of their names, of which only those are open
    /// that were needed. Fails when the folder cannot be read.
    Expected<std::vector<std::string>> names() const;
    /// Opens the pack of that name.
    Expected<std::shared_ptr<const PackReader>> openPack(const std::string& name) const;
    /// Lets go of everything that is open, as the packs on the disk are others now.
    void forget();

private:
    struct Pack {
        std::string name;
        // Null when it could not be opened.
        std::shared_ptr<const PackReader> reader;
    };

    Expected<void> list();
    std::vector<std::size_t> smallOnes() const;
    Expected<std::vector<std::string>> takeUpSmallOnes();
    void removeTaken(const std::vector<std::string>& taken);
    std::optional<PackedContents> findInOpen(const DigestBytes& digest);
    /// The copies of a base: in the pack of what builds on it, or in all others.
    enum class Where { samePack, elsewhere };
    std::vector<PackedContents> copiesOf(const DigestBytes& digest, const PackSource& dependent,
                                         Where where);
    Expected<void> extend(std::vector<PackedContents>& chain, int& looks);
    Expected<void> extendBy(const PackedContents& base, std::vector<PackedContents>& chain,
                            int& looks);
    Expected<std::vector<PackedContents>> chainOf(const PackedContents& contents);
    Expected<std::vector<PackedContents>> chainOfAnyCopy(const PackedContents& contents);
    Expected<void> addWithout(PackWriter& writer, const PackReader& from,
                              const DigestBytes& digest);
    Expected<std::shared_ptr<const Bytes>> contentsOfBase(std::vector<PackedContents> chain);

    sys::Folder root_;
    std::vector<std::string> ignored_;
    std::vector<Pack> packs_;
    bool isListed_ = false;
    // Why something that is nowhere else may lie in a pack that cannot be read.
    std::optional<ErrorMessage> problem_;
    std::unique_ptr<PackWriter> writer_;
    BlockReader blocks_;
    // Of the base that was needed last, unless it is long.
    DigestBytes lastBase_ = {};
    std::shared_ptr<const Bytes> lastBaseContents_;
};

}  // namespace qrv
