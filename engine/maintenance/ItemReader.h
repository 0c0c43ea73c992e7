#pragma once

#include <common/base/Expected.h>
#include <engine/base/Bytes.h>
#include <engine/maintenance/ContentsCache.h>
#include <engine/maintenance/HoldingReader.h>
#include <engine/maintenance/PackingPlan.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace qrv {

/// Reads the contents of a plan from wherever they lie, and keeps what was read last. What cannot
/// be read is told in `problems`.
class ItemReader {
public:
    using Use = std::function<Expected<void>(VersionReader& contents)>;

    /// All of these must outlive this.
    ItemReader(Repository& repository, const Holdings& holdings, const PackingPlan& plan,
               std::vector<OdString>& problems);

    /// Hands the contents to `use`, from the first place where that succeeds. False when there is
    /// none; the problem is then that of the first.
    bool read(std::uint32_t item, const Use& use);
    /// The same from one place, and without a word about a failure.
    Expected<void> readFrom(const Holding& holding, const Use& use);
    /// Null when they cannot be read.
    std::shared_ptr<const Bytes> contentsOf(std::uint32_t item);

private:
    const Holdings& holdings_;
    const PackingPlan& plan_;
    std::vector<OdString>& problems_;
    HoldingReader reader_;
    ContentsCache cache_;
};

}  // namespace qrv
