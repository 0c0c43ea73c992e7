#include <cli/text/CommitText.h>
#include <platform/kernel/OdTimeStamp.h>

#include <utility>

namespace qrv::cli {

namespace {

OdString isoTime(std::int64_t seconds) {
    constexpr std::int64_t millisecondsPerSecond = 1000;
    OdTimeStamp time(OdTimeStamp::kInitZero);
    time.setPackedValue(seconds * millisecondsPerSecond);
    return time.strftime(L"%Y-%m-%dT%H:%M:%SZ");
}

}  // namespace

OdString titleOf(const CommitEntry& commit) {
    const int end = commit.message.find(L'\n');
    return end < 0 ? commit.message : commit.message.left(end);
}

jsonlib::json::Object toJson(const CommitEntry& commit) {
    jsonlib::json::Array parents;
    for (const OdString& parent : commit.parents)
        parents.emplace_back(parent.toWide());
    jsonlib::json::Object object;
    object[L"number"] = commit.number;
    object[L"hash"] = commit.hash.toWide();
    object[L"parents"] = std::move(parents);
    object[L"author"] = commit.author.toWide();
    object[L"message"] = commit.message.toWide();
    object[L"time"] = isoTime(commit.timeSeconds).toWide();
    return object;
}

}  // namespace qrv::cli
