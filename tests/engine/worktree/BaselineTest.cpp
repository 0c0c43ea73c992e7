#include <engine/worktree/Baseline.h>
#include <engine/worktree/Ticks.h>

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using common::IndexData;
using qrv::Baseline;
using qrv::BaselineBuilder;
using qrv::isUnmodified;
using qrv::KnownFile;

constexpr std::int64_t writtenNs = 1'700'000'000'000'000'000;
constexpr std::int64_t twoSecondsTicks = 20'000'000;
const sys::FileStamp someStamp = {
    .number = 7, .sizeBytes = 5, .modifiedNs = writtenNs, .changedNs = writtenNs + 1};

std::int64_t writtenTicks() {
    return qrv::toTicks(writtenNs);
}

KnownFile ofSize(std::int64_t sizeBytes) {
    KnownFile file;
    file.sizeBytes = sizeBytes;
    return file;
}

Baseline baselineOf(const std::vector<std::pair<std::string, std::int64_t>>& files) {
    BaselineBuilder builder;
    for (const auto& [path, sizeBytes] : files)
        builder.add(path, ofSize(sizeBytes));
    return builder.build();
}

/// "path size, ..."
std::string shown(const Baseline& baseline) {
    std::string text;
    for (const KnownFile& file : baseline.files())
        text += std::string(file.path) + " " + std::to_string(file.sizeBytes) + ", ";
    return text;
}

/// Of one file with that index entry.
std::int64_t believedOf(const IndexData& entry, std::optional<std::int64_t> stateModifiedNs) {
    Baseline baseline = baselineOf({{"a.txt", 1}});
    baseline.believe({{OdString(L"a.txt"), entry}}, stateModifiedNs);
    return baseline.files().at(0).unmodifiedTicks;
}

TEST(Baseline, TakesTheFilesOfHeadInTheirOrder) {
    EXPECT_EQ(shown(baselineOf({{"z", 1LL << 40}, {"a.txt", 3}, {"pl\xC3\xA4ne/\xE4", 0}})),
              "a.txt 3, pl\xC3\xA4ne/\xE4 0, z 1099511627776, ");
    EXPECT_EQ(shown(baselineOf({})), "");
}

TEST(Baseline, KeepsItsPathsWhenItIsMoved) {
    Baseline first = baselineOf({{"a", 1}, {"b", 2}});
    const Baseline second = std::move(first);
    EXPECT_EQ(shown(second), "a 1, b 2, ");
}

TEST(Baseline, TakesOverWhatHasChangedSince) {
    Baseline baseline = baselineOf({{"a", 1}, {"b", 2}, {"c/d", 3}});
    baseline.change({{"b", std::nullopt}, {"c/d", ofSize(4)}, {"c/a", ofSize(5)}, {"e", {}}});
    EXPECT_EQ(shown(baseline), "a 1, c/a 5, c/d 4, ");
    baseline.change({{"a", std::nullopt}, {"0", ofSize(6)}});
    EXPECT_EQ(shown(baseline), "0 6, c/a 5, c/d 4, ");
    const Baseline moved = std::move(baseline);
    EXPECT_EQ(shown(moved), "0 6, c/a 5, c/d 4, ");
}

TEST(Baseline, FindsTheEntryOfEachFileAmongOthers) {
    const std::map<OdString, IndexData> index = {
        {L"a", {1, false}}, {L"b", {2, false}}, {L"d", {4, false}}, {L"e", {5, false}}};
    Baseline baseline = baselineOf({{"b", 0}, {"c", 0}, {"e", 0}, {"f", 0}});
    baseline.believe(index, writtenNs);
    EXPECT_EQ(baseline.files()[0].unmodifiedTicks, 2);
    EXPECT_EQ(baseline.files()[1].unmodifiedTicks, KnownFile::never);
    EXPECT_EQ(baseline.files()[2].unmodifiedTicks, 5);
    EXPECT_EQ(baseline.files()[3].unmodifiedTicks, KnownFile::never);
}

TEST(Baseline, BelievesOnlyAnUnmodifiedFileThatIsSafelyOlderThanTheState) {
    const std::int64_t safe = writtenTicks() - twoSecondsTicks - 1;
    EXPECT_EQ(believedOf({safe, false}, writtenNs), safe);
    EXPECT_EQ(believedOf({safe + 1, false}, writtenNs), KnownFile::never);
    EXPECT_EQ(believedOf({writtenTicks() + 1, false}, writtenNs), KnownFile::never);
    EXPECT_EQ(believedOf({safe, true}, writtenNs), KnownFile::never);
    EXPECT_EQ(believedOf({safe, false}, std::nullopt), KnownFile::never);
}

TEST(BaselineOrder, IsThatOfTheDecodedTexts) {
    const std::string paths[] = {"",
                                 "a",
                                 "a/b",
                                 "a/b.txt",
                                 "ab",
                                 "b",
                                 "\x7F",
                                 "pl\xC3\xA4n",
                                 "pl\xE4n",
                                 "pl\xC3",
                                 "pl\xC3x",
                                 "pl\xEE\x80\x80",
                                 "pl\xF0\x9F\x98\x80",
                                 "pl\xEF\xBF\xBD",
                                 "pl\xED\xA0\x80",
                                 "plan",
                                 "pl\xC3\xA4n/x",
                                 std::string("a\0b", 3)};
    for (const std::string& bytes : paths) {
        for (const std::string& other : paths) {
            const OdString one = OdString::fromNarrow(bytes);
            const OdString text = OdString::fromNarrow(other);
            EXPECT_EQ(qrv::compare(bytes, text), (one > text) - (one < text))
                << bytes << " and " << other;
            EXPECT_EQ(qrv::compareTexts(bytes, other), qrv::compare(bytes, text))
                << bytes << " and " << other;
        }
    }
}

TEST(KnownFile, IsUnmodifiedOnlyWithTheWholeStampAndAsAFile) {
    const sys::FileStatus status = {.kind = sys::FileKind::regular,
                                    .number = 7,
                                    .sizeBytes = 5,
                                    .modifiedNs = writtenNs,
                                    .changedNs = writtenNs + 1};
    KnownFile file = ofSize(5);
    EXPECT_FALSE(isUnmodified(file, status));
    file.note(someStamp);
    EXPECT_TRUE(isUnmodified(file, status));
    sys::FileStatus other = status;
    other.kind = sys::FileKind::link;
    EXPECT_FALSE(isUnmodified(file, other));
    other = status;
    other.number = 8;
    EXPECT_FALSE(isUnmodified(file, other));
    other = status;
    other.sizeBytes = 6;
    EXPECT_FALSE(isUnmodified(file, other));
    other = status;
    other.modifiedNs += 1;
    EXPECT_FALSE(isUnmodified(file, other));
    other = status;
    other.changedNs += 1;
    EXPECT_FALSE(isUnmodified(file, other));
}

TEST(KnownFile, IsUnmodifiedByTheTimeOfAnIndexWhereNothingElseIsNoted) {
    const sys::FileStatus status = {
        .kind = sys::FileKind::regular, .number = 8, .sizeBytes = 5, .modifiedNs = writtenNs};
    KnownFile file = ofSize(5);
    file.unmodifiedTicks = writtenTicks();
    EXPECT_TRUE(isUnmodified(file, status));
    sys::FileStatus other = status;
    other.modifiedNs += 100;
    EXPECT_FALSE(isUnmodified(file, other));
    other = status;
    other.sizeBytes = 6;
    EXPECT_FALSE(isUnmodified(file, other));
    file.note(someStamp);
    EXPECT_FALSE(isUnmodified(file, status));
}

}  // namespace
