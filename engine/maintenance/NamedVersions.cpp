#include <engine/history/JournalEntry.h>
#include <engine/history/VersionRows.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/paths/CheckedUrl.h>

#include <algorithm>
#include <optional>
#include <string_view>

namespace qrv {

namespace {

/// Nobody names a version of a store with this number.
constexpr std::uint32_t unknownStore = 0xFFFFFFFF;

/// Goes through everything that names a version, in the order of the commits.
class Naming {
public:
    Naming(History& history, const std::function<void(const OdString&)>& onError)
        : history_(history), onError_(onError) {}

    /// `visit` gets the URL, the path and the number of the commit.
    template <class Visit>
    void run(const Visit& visit) {
        std::vector<std::int64_t> numbers;
        attempt([this, &numbers] { numbers = commitNumbers(history_); });
        for (const std::int64_t number : numbers)
            attempt([&] {
                visitVersions(history_, number,
                              [&](const VersionRow& row) { visit(row.url, row.path, number); });
            });
        attempt([&] { visitNotedEntry(visit); });
    }

private:
    template <class Step>
    void attempt(const Step& step) {
        try {
            step();
        } catch (const DatabaseError& error) {
            onError_(error.description());
        }
    }

    template <class Visit>
    void visitNotedEntry(const Visit& visit) {
        const std::optional<JournalEntry> entry = notedEntry(history_);
        if (!entry)
            return;
        for (const TreeStep& file : entry->steps) {
            for (const OdString& url : {file.before, file.after}) {
                if (!url.isEmpty())
                    visit(url, file.path.text().toNarrow(), 0);
            }
        }
    }

    History& history_;
    const std::function<void(const OdString&)>& onError_;
};

}  // namespace

void NamedVersions::add(const OdString& url) {
    const Expected<CheckedUrl> checked = CheckedUrl::check(url);
    if (!checked)
        return;
    Row row;
    row.digest = toDigestBytes(checked->digest().toNarrow());
    if (checked->isDrawing()) {
        const auto [store, isNew] = storeNumbers_.try_emplace(
            checked->store().toNarrow(), static_cast<std::uint32_t>(stores_.size() + 1));
        if (isNew)
            stores_.emplace_back(store);
        row.store = store->second;
    }
    rows_.push_back(row);
}

void NamedVersions::order() {
    std::sort(rows_.begin(), rows_.end());
    rows_.erase(std::unique(rows_.begin(), rows_.end()), rows_.end());
}

NamedVersions::Range NamedVersions::ofDigest(const DigestBytes& digest) const {
    const auto first = std::partition_point(rows_.begin(), rows_.end(),
                                            [&](const Row& row) { return row.digest < digest; });
    const auto last = std::partition_point(first, rows_.end(),
                                           [&](const Row& row) { return row.digest == digest; });
    return {.first = static_cast<std::size_t>(first - rows_.begin()),
            .count = static_cast<std::size_t>(last - first)};
}

std::size_t NamedVersions::find(const OdString& url) const {
    const Expected<CheckedUrl> checked = CheckedUrl::check(url);
    if (!checked)
        return size();
    std::uint32_t store = 0;
    if (checked->isDrawing()) {
        const auto known = storeNumbers_.find(checked->store().toNarrow());
        store = known == storeNumbers_.end() ? unknownStore : known->second;
    }
    const Range range = ofDigest(toDigestBytes(checked->digest().toNarrow()));
    for (std::size_t which = range.first; which < range.first + range.count; ++which) {
        if (rows_[which].store == store)
            return which;
    }
    return size();
}

OdString NamedVersions::url(std::size_t which) const {
    const Row& row = rows_[which];
    const OdString digest = OdString::fromNarrow(toDigits(row.digest));
    if (row.store == 0)
        return objectUrl(digest);
    return drawingUrl(OdString::fromNarrow(stores_[row.store - 1]->first), digest);
}

std::vector<std::int64_t> commitNumbers(History& history) {
    std::vector<std::int64_t> numbers;
    Statement query = history.database().prepare("SELECT number FROM commits ORDER BY number");
    while (query.step())
        numbers.push_back(query.integer(0));
    return numbers;
}

NamedVersions namedVersions(History& history, const std::function<void(const OdString&)>& onError) {
    NamedVersions named;
    Naming(history, onError).run([&](const OdString& url, std::string_view, std::int64_t) {
        named.add(url);
    });
    named.order();
    return named;
}

std::map<OdString, VersionName> namesOf(std::span<const OdString> urls, History& history) {
    std::map<OdString, VersionName> names;
    for (const OdString& url : urls)
        names.try_emplace(url);
    const auto name = [&](const OdString& url, std::string_view path, std::int64_t commit) {
        const auto asked = names.find(url);
        if (asked == names.end())
            return;
        VersionName& found = asked->second;
        if (!found.path.isEmpty())
            ++found.others;
        else
            found = {.path = OdString::fromNarrow(path), .commit = commit, .others = 0};
    };
    Naming(history, [](const OdString&) {}).run(name);
    std::erase_if(names, [](const auto& entry) { return entry.second.path.isEmpty(); });
    return names;
}

}  // namespace qrv
