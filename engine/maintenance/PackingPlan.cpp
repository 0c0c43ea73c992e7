#include <engine/base/Digest.h>
#include <engine/history/VersionRows.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/maintenance/PackingPlan.h>
#include <engine/paths/CheckedUrl.h>

#include <algorithm>
#include <functional>
#include <unordered_map>
#include <utility>

namespace qrv {

namespace {

/// The ending of a path with its point, or nothing.
std::string_view endingOf(std::string_view path) {
    const std::size_t name = path.rfind('/') == std::string_view::npos ? 0 : path.rfind('/') + 1;
    const std::size_t point = path.rfind('.');
    return point == std::string_view::npos || point <= name ? std::string_view()
                                                            : path.substr(point);
}

/// Follows each file from its newest version to its oldest. Files are known by the hash of their
/// path: where two have the same, the one is proposed as a base of the other, and does not pay.
class Lines {
public:
    Lines(PackingPlan& plan, History& history) : plan_(plan), history_(history) {}

    void follow() {
        std::vector<std::int64_t> numbers = commitNumbers(history_);
        std::reverse(numbers.begin(), numbers.end());
        for (const std::int64_t number : numbers)
            visitVersions(history_, number, [this](const VersionRow& row) { meet(row); });
    }

private:
    using FileHash = std::size_t;

    static FileHash hashOf(std::string_view path) { return std::hash<std::string_view>()(path); }

    void meet(const VersionRow& row) {
        FileHash file = hashOf(row.path);
        if (const auto later = renamed_.find(file); later != renamed_.end())
            file = later->second;
        if (!row.previousPath.empty())
            renamed_.insert_or_assign(hashOf(row.previousPath), file);
        const std::uint32_t number = plan_.find(toDigestBytes(digestOfUrl(row.url).toNarrow()));
        if (number == PackItem::none)
            return;
        const auto [newest, isFirst] = newest_.try_emplace(file, number);
        const std::uint32_t newer = std::exchange(newest->second, number);
        PackItem& item = plan_.items[number];
        if (item.age != PackItem::none)
            return;
        item.age = met_++;
        if (isFirst) {
            addName(item, row.path);
            return;
        }
        item.newer = newer;
        // Of a file that was renamed, all versions stay together.
        item.name = plan_.items[newer].name;
    }

    void addName(PackItem& item, std::string_view path) {
        item.name = static_cast<std::uint32_t>(plan_.names.size());
        plan_.names.append(path).push_back('\0');
    }

    PackingPlan& plan_;
    History& history_;
    /// Of each file the version that was met last.
    std::unordered_map<FileHash, std::uint32_t> newest_;
    /// What a file that was called so is called later.
    std::unordered_map<FileHash, FileHash> renamed_;
    std::uint32_t met_ = 0;
};

PackingPlan itemsOf(const Holdings& holdings, const NamedVersions& named) {
    PackingPlan plan;
    const std::vector<Holding>& all = holdings.all;
    for (std::size_t first = 0; first < all.size();) {
        PackItem item = {.digest = all[first].digest,
                         .sizeBytes = all[first].sizeBytes,
                         .firstHolding = static_cast<std::uint32_t>(first)};
        item.isNamed = named.ofDigest(item.digest).count > 0;
        bool isNeeded = false;
        std::size_t end = first;
        for (; end < all.size() && all[end].digest == item.digest; ++end) {
            item.isKept = item.isKept || !holdings.holders[all[end].holder].isTakenUp;
            isNeeded = isNeeded || holdings.isNeeded(all[end], named);
        }
        item.holdingCount = static_cast<std::uint32_t>(end - first);
        const auto number = static_cast<std::uint32_t>(plan.items.size());
        if (!isNeeded && !item.isKept)
            plan.dropped.push_back(number);
        else if (!item.isKept)
            (item.isNamed ? plan.order : plan.waiting).push_back(number);
        plan.items.push_back(item);
        first = end;
    }
    return plan;
}

void putInOrder(PackingPlan& plan) {
    const auto isBefore = [&plan](std::uint32_t one, std::uint32_t other) {
        const PackItem& left = plan.items[one];
        const PackItem& right = plan.items[other];
        if (left.name != right.name) {
            const std::string_view leftName = plan.nameOf(left);
            const std::string_view rightName = plan.nameOf(right);
            const int endings = endingOf(leftName).compare(endingOf(rightName));
            if (endings != 0)
                return endings < 0;
            if (const int paths = leftName.compare(rightName); paths != 0)
                return paths < 0;
        }
        return left.age < right.age;
    };
    std::sort(plan.order.begin(), plan.order.end(), isBefore);
}

}  // namespace

std::uint32_t PackingPlan::find(const DigestBytes& digest) const {
    const auto found = std::partition_point(
        items.begin(), items.end(), [&](const PackItem& item) { return item.digest < digest; });
    return found != items.end() && found->digest == digest
               ? static_cast<std::uint32_t>(found - items.begin())
               : PackItem::none;
}

std::string_view PackingPlan::nameOf(const PackItem& item) const {
    return item.name == PackItem::none ? std::string_view() : names.c_str() + item.name;
}

PackingPlan planPacking(const Holdings& holdings, const NamedVersions& named, History& history) {
    PackingPlan plan = itemsOf(holdings, named);
    Lines(plan, history).follow();
    putInOrder(plan);
    return plan;
}

}  // namespace qrv
