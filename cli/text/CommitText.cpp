#include <cli/text/CommitText.h>
#include <platform/kernel/OdTimeStamp.h>

#include <utility>

namespace qrv_cli {

namespace {

constexpr int digitsOfShortHash = 10;
constexpr std::int64_t millisecondsPerSecond = 1000;

OdString formatted(std::int64_t seconds, const wchar_t* format) {
    OdTimeStamp time(OdTimeStamp::kInitZero);
    time.setPackedValue(seconds * millisecondsPerSecond);
    return time.strftime(format);
}

}  // namespace

OdString titleOf(const CommitEntry& commit) {
    const int end = commit.message.find(L'\n');
    return end < 0 ? commit.message : commit.message.left(end);
}

OdString shortHash(const OdString& hash) {
    return hash.left(digitsOfShortHash);
}

OdString timeText(std::int64_t seconds) {
    return formatted(seconds, L"%Y-%m-%d %H:%M:%S UTC");
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
    object[L"time"] = formatted(commit.timeSeconds, L"%Y-%m-%dT%H:%M:%SZ").toWide();
    return object;
}

}  // namespace qrv_cli
