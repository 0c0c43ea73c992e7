#include <engine/maintenance/ItemReader.h>
#include <engine/storage/FrameReader.h>
#include <engine/storage/Sketch.h>

#include <optional>
#include <utility>

namespace qrv {

namespace {

constexpr std::int64_t cachedBytes = std::int64_t{48} << 20;

}  // namespace

ItemReader::ItemReader(Repository& repository, const Holdings& holdings, const PackingPlan& plan,
                       std::vector<OdString>& problems)
    : holdings_(holdings),
      plan_(plan),
      problems_(problems),
      reader_(repository, holdings),
      cache_(cachedBytes) {
}

bool ItemReader::read(std::uint32_t item, const Use& use) {
    std::optional<OdString> problem;
    const PackItem& asked = plan_.items[item];
    for (std::uint32_t i = 0; i < asked.holdingCount; ++i) {
        const Expected<void> done = readFrom(holdings_.all[asked.firstHolding + i], use);
        if (done)
            return true;
        if (!problem)
            problem = done.error().message;
    }
    if (problem)
        problems_.push_back(*problem);
    return false;
}

Expected<void> ItemReader::readFrom(const Holding& holding, const Use& use) try {
    const Expected<std::unique_ptr<VersionReader>> contents = reader_.open(holding);
    if (!contents)
        return contents.error();
    return use(**contents);
} catch (const DatabaseError& error) {
    return ErrorMessage{error.description()};
}

std::shared_ptr<const Bytes> ItemReader::contentsOf(std::uint32_t item) {
    if (std::shared_ptr<const Bytes> known = cache_.find(item))
        return known;
    std::shared_ptr<const Bytes> contents;
    read(item, [&](VersionReader& version) -> Expected<void> {
        Expected<Bytes> whole = readWhole(version);
        if (!whole)
            return std::move(whole).error();
        contents = std::make_shared<const Bytes>(std::move(*whole));
        return {};
    });
    // Of what is shorter nothing is a base.
    if (contents && contents->size() >= shortestSketchedBytes)
        cache_.add(item, contents);
    return contents;
}

}  // namespace qrv
