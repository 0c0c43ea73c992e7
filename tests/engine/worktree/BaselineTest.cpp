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
using qrv::isUnmodified;
using qrv::KnownFile;
using qrv::SizedFile;

constexpr std::int64_t writtenNs = 1'700'000'000'000'000'000;
constexpr std::int64_t twoSecondsTicks = 20'000'000;

std::int64_t writtenTicks() {
    return qrv::toTicks(writtenNs);
}

/// Of one file with that index entry.
std::int64_t believedOf(const IndexData& entry, std::optional<std::int64_t> stateModifiedNs) {
    const Baseline baseline =
        Baseline::of({{L"a.txt", 1}}, {{OdString(L"a.txt"), entry}}, stateModifiedNs);
    return baseline.files().at(0).unmodifiedTicks;
}

TEST(Baseline, TakesTheFilesOfHeadInTheirOrder) {
    const std::vector<SizedFile> head = {
        {L"a.txt", 3}, {OdString::fromNarrow("pl\xC3\xA4ne/\xE4"), 0}, {L"z", 1LL << 40}};
    const Baseline baseline = Baseline::of(head, {}, writtenNs);
    ASSERT_EQ(baseline.files().size(), 3U);
    EXPECT_EQ(baseline.files()[0].path, "a.txt");
    EXPECT_EQ(baseline.files()[1].path, "pl\xC3\xA4ne/\xE4");
    EXPECT_EQ(baseline.files()[2].path, "z");
    EXPECT_EQ(baseline.files()[0].sizeBytes, 3);
    EXPECT_EQ(baseline.files()[2].sizeBytes, 1LL << 40);
}

TEST(Baseline, KeepsItsPathsWhenItIsMoved) {
    Baseline first = Baseline::of({{L"a", 1}, {L"b", 2}}, {}, writtenNs);
    const Baseline second = std::move(first);
    EXPECT_EQ(second.files()[0].path, "a");
    EXPECT_EQ(second.files()[1].path, "b");
}

TEST(Baseline, FindsTheEntryOfEachFileAmongOthers) {
    const std::map<OdString, IndexData> index = {
        {L"a", {1, false}}, {L"b", {2, false}}, {L"d", {4, false}}, {L"e", {5, false}}};
    const Baseline baseline = Baseline::of({{L"b", 0}, {L"c", 0}, {L"e", 0}}, index, writtenNs);
    EXPECT_EQ(baseline.files()[0].unmodifiedTicks, 2);
    EXPECT_EQ(baseline.files()[1].unmodifiedTicks, KnownFile::never);
    EXPECT_EQ(baseline.files()[2].unmodifiedTicks, 5);
}

TEST(Baseline, BelievesOnlyAnUnmodifiedFileThatIsSafelyOlderThanTheState) {
    const std::int64_t safe = writtenTicks() - twoSecondsTicks - 1;
    EXPECT_EQ(believedOf({safe, false}, writtenNs), safe);
    EXPECT_EQ(believedOf({safe + 1, false}, writtenNs), KnownFile::never);
    EXPECT_EQ(believedOf({writtenTicks() + 1, false}, writtenNs), KnownFile::never);
    EXPECT_EQ(believedOf({safe, true}, writtenNs), KnownFile::never);
    EXPECT_EQ(believedOf({safe, false}, std::nullopt), KnownFile::never);
}

TEST(Baseline, RemembersTheTimeOfAModifiedFile) {
    const std::map<OdString, IndexData> index = {{L"a", {1, true}}, {L"b", {2, false}}};
    const Baseline baseline = Baseline::of({{L"a", 0}, {L"b", 0}, {L"c", 0}}, index, writtenNs);
    EXPECT_EQ(baseline.files()[0].modifiedTicks, 1);
    EXPECT_EQ(baseline.files()[1].modifiedTicks, KnownFile::never);
    EXPECT_EQ(baseline.files()[2].modifiedTicks, KnownFile::never);
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
        }
    }
}

TEST(KnownFile, IsUnmodifiedOnlyWithItsSizeAndTimeAndAsAFile) {
    const sys::FileStatus status = {
        .kind = sys::FileKind::regular, .sizeBytes = 5, .modifiedNs = writtenNs, .permissions = 0};
    const KnownFile file = {.path = "a",
                            .sizeBytes = 5,
                            .unmodifiedTicks = writtenTicks(),
                            .modifiedTicks = KnownFile::never};
    EXPECT_TRUE(isUnmodified(file, status));
    sys::FileStatus other = status;
    other.sizeBytes = 6;
    EXPECT_FALSE(isUnmodified(file, other));
    other = status;
    other.modifiedNs += 100;
    EXPECT_FALSE(isUnmodified(file, other));
    other = status;
    other.kind = sys::FileKind::link;
    EXPECT_FALSE(isUnmodified(file, other));
    KnownFile unbelieved = file;
    unbelieved.unmodifiedTicks = KnownFile::never;
    EXPECT_FALSE(isUnmodified(unbelieved, status));
}

}  // namespace
