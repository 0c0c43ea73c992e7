#pragma once

#include <engine/base/DigestBytes.h>
#include <engine/history/History.h>
#include <platform/kernel/OdString.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace qrv {

/// The stored versions that somebody names, each once, ordered by digest: 36 bytes for each and the
/// names of the drawing stores, for there may be millions.
class NamedVersions {
public:
    /// Adds a storage URL. Counts after the next call of `order`.
    void add(const OdString& url);
    /// Puts what was added in its place.
    void order();

    bool isEmpty() const { return rows_.empty(); }
    std::size_t size() const { return rows_.size(); }
    /// Which one it is, from 0; `size()` when nobody names it.
    std::size_t find(const OdString& url) const;
    bool contains(const OdString& url) const { return find(url) != size(); }
    /// Those whose contents have that digest: the first, and how many.
    struct Range {
        std::size_t first = 0;
        std::size_t count = 0;
    };
    Range ofDigest(const DigestBytes& digest) const;
    OdString url(std::size_t which) const;
    bool isDrawing(std::size_t which) const { return rows_[which].store != 0; }

private:
    struct Row {
        DigestBytes digest = {};
        /// Which of the stores; 0 for an object.
        std::uint32_t store = 0;

        friend auto operator<=>(const Row&, const Row&) = default;
    };
    using StoreNumbers = std::map<std::string, std::uint32_t>;

    std::vector<Row> rows_;
    StoreNumbers storeNumbers_;
    std::vector<StoreNumbers::const_iterator> stores_;
};

/// The numbers of all commits, ascending. Throws `DatabaseError`.
std::vector<std::int64_t> commitNumbers(History& history);

/// Every version that a commit or a noted entry names. What the history cannot tell is left out,
/// and `onError` is told why.
NamedVersions namedVersions(History& history, const std::function<void(const OdString&)>& onError);

/// Who names a stored version.
struct VersionName {
    /// The path at which the first one names it.
    OdString path;
    /// The number of that commit; 0 when it is the entry of an interrupted command.
    std::int64_t commit = 0;
    /// How many times it is named besides.
    std::int64_t others = 0;
};

/// Who names each of these versions, given by their URLs. What the history cannot tell is left out.
std::map<OdString, VersionName> namesOf(std::span<const OdString> urls, History& history);

}  // namespace qrv
