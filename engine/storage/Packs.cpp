#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/storage/Age.h>
#include <engine/storage/ChainMemory.h>
#include <engine/storage/Packs.h>
#include <engine/storage/Zstd.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace qrv {

namespace {

constexpr std::string_view packEnding = layout::packEnding;
// What others build on is kept in memory up to this length.
constexpr std::int64_t longestKeptBase = std::int64_t{16} << 20;

OdString packText(const std::string& name) {
    return OdString::fromNarrow(layout::packPath(name));
}

}  // namespace

Packs::Packs(sys::Folder root, std::vector<std::string> ignored)
    : root_(std::move(root)), ignored_(std::move(ignored)) {
}

Expected<std::vector<std::string>> Packs::names() const {
    std::vector<std::string> names;
    const sys::Outcome<sys::Folder> folder = root_.openFolder(layout::packsFolder);
    if (!folder && folder.error() == std::errc::no_such_file_or_directory)
        return names;
    const sys::Outcome<std::vector<std::string>> files = folder ? folder->list() : folder.error();
    if (!files)
        return systemFailure(tr(L"The folder '%ls' cannot be read: %ls"),
                             OdString(layout::packsFolder), files.error());
    for (const std::string& file : *files) {
        const std::string name =
            file.substr(0, file.size() - std::min(file.size(), packEnding.size()));
        if (isPackName(name) && file.ends_with(packEnding))
            names.push_back(name);
    }
    return names;
}

Expected<std::shared_ptr<const PackReader>> Packs::openPack(const std::string& name) const {
    sys::Outcome<sys::InputFile> file = root_.openFile(layout::packPath(name));
    if (!file)
        return ErrorMessage{OdString::format(tr(L"'%ls' cannot be read: %ls"),
                                             printable(packText(name)), causeOf(file.error()))};
    return PackReader::open(std::move(*file), packText(name));
}

// Takes the packs that are new into the list, and those that have gone out of it. One that goes
// between the look at the names and its opening has its contents in one that came, so the caller
// looks again; one that is open stays readable.
Expected<void> Packs::list() {
    const Expected<std::vector<std::string>> found = names();
    if (!found)
        return found.error();
    std::vector<Pack> packs;
    problem_.reset();
    for (const std::string& name : *found) {
        if (std::find(ignored_.begin(), ignored_.end(), name) != ignored_.end())
            continue;
        const auto known = std::find_if(packs_.begin(), packs_.end(), [&](const Pack& pack) {
            return pack.name == name && pack.reader;
        });
        if (known != packs_.end()) {
            packs.push_back(std::move(*known));
            continue;
        }
        Expected<std::shared_ptr<const PackReader>> opened = openPack(name);
        if (!opened)
            problem_ = opened.error();
        packs.push_back({.name = name, .reader = opened ? std::move(*opened) : nullptr});
    }
    packs_ = std::move(packs);
    isListed_ = true;
    return {};
}

std::optional<PackedContents> Packs::findInOpen(const DigestBytes& digest) {
    for (const Pack& pack : packs_) {
        if (!pack.reader)
            continue;
        Expected<std::optional<PackedContents>> found = pack.reader->find(digest);
        if (!found)
            problem_ = found.error();
        else if (*found)
            return std::move(*found);
    }
    return std::nullopt;
}

Expected<std::optional<PackedContents>> Packs::find(const DigestBytes& digest) {
    if (writer_ && writer_->contains(digest))
        return writer_->find(digest);
    if (isListed_) {
        if (std::optional<PackedContents> found = findInOpen(digest))
            return found;
    }
    // Another process may have added or exchanged packs since, and once more meanwhile.
    constexpr int mostLooks = 3;
    for (int look = 0; look < mostLooks; ++look) {
        if (Expected<void> listed = list(); !listed)
            return std::move(listed).error();
        if (std::optional<PackedContents> found = findInOpen(digest))
            return found;
        if (!problem_)
            return std::optional<PackedContents>();
    }
    return *problem_;
}

bool Packs::has(const DigestBytes& digest) {
    if (writer_ && writer_->contains(digest))
        return true;
    // Whoever stores holds the lock, so nobody else adds anything.
    if (!isListed_ && !list())
        return false;
    return findInOpen(digest).has_value();
}

// What the first of the chain builds on; null when it stands alone.
Expected<std::shared_ptr<const Bytes>> Packs::contentsOfBase(std::vector<PackedContents> chain) {
    if (chain.size() == 1)
        return std::shared_ptr<const Bytes>();
    const DigestBytes digest = chain[1].digest;
    const auto known =
        std::find_if(chain.begin() + 1, chain.end(), [this](const PackedContents& base) {
            return lastBaseContents_ && base.digest == lastBase_;
        });
    std::shared_ptr<const Bytes> contents;
    if (known != chain.end())
        contents = lastBaseContents_;
    lastBaseContents_.reset();
    for (chain.erase(known, chain.end()); chain.size() > 1; chain.pop_back()) {
        const Expected<std::unique_ptr<VersionReader>> reader =
            blocks_.open(chain.back(), std::move(contents), FrameReader::Check::sizeOnly);
        if (!reader)
            return reader.error();
        Expected<Bytes> whole = readWhole(**reader);
        if (!whole)
            return std::move(whole).error();
        contents = std::make_shared<const Bytes>(std::move(*whole));
    }
    if (contents->size() <= longestKeptBase) {
        lastBase_ = digest;
        lastBaseContents_ = contents;
    }
    return contents;
}

Expected<std::unique_ptr<VersionReader>> Packs::open(const PackedContents& contents) {
    Expected<std::vector<PackedContents>> chain = chainOfAnyCopy(contents);
    if (!chain)
        return std::move(chain).error();
    std::vector<std::int64_t> sizes;
    for (const PackedContents& each : *chain)
        sizes.push_back(each.sizeBytes);
    if (Expected<void> isEnough =
            requireMemoryFor(sizes, toDigits(contents.digest), contents.source->path);
        !isEnough)
        return std::move(isEnough).error();
    const PackedContents first = chain->front();
    Expected<std::shared_ptr<const Bytes>> base = contentsOfBase(std::move(*chain));
    if (!base)
        return std::move(base).error();
    return blocks_.open(first, std::move(*base), FrameReader::Check::digest);
}

Expected<std::unique_ptr<VersionReader>> Packs::open(const DigestBytes& digest) {
    const Expected<std::optional<PackedContents>> found = find(digest);
    if (!found)
        return found.error();
    return *found ? open(**found) : Expected<std::unique_ptr<VersionReader>>(nullptr);
}

std::optional<NextBase> Packs::baseAfter(const DigestBytes& previous) {
    const Expected<std::optional<PackedContents>> found = find(previous);
    if (!found || !*found)
        return std::nullopt;
    const Expected<std::vector<PackedContents>> chain = chainOfAnyCopy(**found);
    if (!chain)
        return std::nullopt;
    const PackBlock& block = chain->front().block;
    // It may lead on through other packs than those for which its depth was written.
    const std::size_t depth = std::max<std::size_t>(block.depth, chain->size());
    if (depth < longestChain)
        return NextBase{.digest = previous,
                        .depth = static_cast<std::uint8_t>(depth + 1),
                        .roundStart = block.roundStart};
    if (block.roundStart == longestChain || chain->size() != block.depth)
        return std::nullopt;
    // The chain begins with `previous`, at the greatest depth.
    const PackedContents& base = (*chain)[block.depth - block.roundStart];
    return NextBase{.digest = base.digest,
                    .depth = static_cast<std::uint8_t>(block.roundStart + 1),
                    .roundStart = static_cast<std::uint8_t>(block.roundStart + 1)};
}

bool Packs::renew(const PackedContents& contents) {
    const Expected<std::vector<PackedContents>> chain = chainOf(contents);
    if (!chain)
        return false;
    return std::all_of(chain->begin(), chain->end(), [this](const PackedContents& each) {
        // What waits to be flushed is new.
        return each.source->path == OdString(layout::packsFolder) ||
               !root_.refresh(each.source->path.toNarrow(), ageToRefresh);
    });
}

PackWriter& Packs::writer() {
    if (!writer_)
        writer_ = std::make_unique<PackWriter>(root_);
    return *writer_;
}

Expected<void> Packs::makeRoom() {
    return writer_ && writer_->isFull() ? flush() : Expected<void>();
}

Expected<void> Packs::flush() {
    if (!writer_ || writer_->isEmpty())
        return {};
    Expected<std::vector<std::string>> taken = takeUpSmallOnes();
    // On every way out of here, what has no name by then is dropped.
    const std::unique_ptr<PackWriter> writer = std::move(writer_);
    if (!taken)
        return taken.error();
    const Expected<std::string> name = writer->finish();
    if (!name)
        return name.error();
    // One of the same name has given its place to the new one.
    std::erase(*taken, *name);
    removeTaken(*taken);
    return name->empty() || !isListed_ ? Expected<void>() : list();
}

void Packs::forget() {
    packs_.clear();
    isListed_ = false;
    lastBaseContents_.reset();
}

}  // namespace qrv
