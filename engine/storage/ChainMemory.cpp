#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/storage/ChainMemory.h>
#include <sys/Memory.h>

#include <algorithm>
#include <cstddef>
#include <optional>

namespace qrv {

namespace {

/// So much is always there.
constexpr std::int64_t neverAskedFor = std::int64_t{64} << 20;

}  // namespace

// What builds on another takes memory for the contents of that one and for its own window, which is
// as long as its contents at most; and these, where others build on it.
Expected<void> requireMemoryFor(std::span<const std::int64_t> sizes, const std::string& digest,
                                const OdString& path) {
    std::int64_t needed = 0;
    for (std::size_t i = 0; i + 1 < sizes.size(); ++i) {
        const std::int64_t own = sizes[i] * (i == 0 ? 1 : 2);
        needed = std::max(needed, own + sizes[i + 1]);
    }
    if (needed < neverAskedFor)
        return {};
    const std::optional<std::int64_t> atHand = sys::memoryAtHand();
    if (!atHand || needed <= *atHand)
        return {};
    constexpr std::int64_t mebibyte = std::int64_t{1} << 20;
    return ErrorMessage{OdString::format(tr(L"The version %ls in '%ls' cannot be read: it takes %i "
                                            L"MiB of memory, and %i MiB are free"),
                                         OdString::fromNarrow(digest), printable(path),
                                         needed / mebibyte + 1, *atHand / mebibyte)};
}

}  // namespace qrv
