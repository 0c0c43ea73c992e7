#include <common/json/Writer.h>
#include <common/server/Commit.h>
#include <platform/kernel/Clock.h>
#include <tests/common/server/Records.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

using common::CommitInfo;
using common::File;
using common::Reference;
using common::RefType;
using common::RepoFile;
using common::serializeCommit;
using common::serializeCommitInfo;
using qrv_test::parsed;

constexpr std::int64_t march5th2024 = 1'709'647'629'999;

/// The record as one text, to compare with that of another one.
std::string shown(const jsonlib::json::Value& value) {
    return OdString(jsonlib::json::write(value)).toNarrow();
}

std::string record(const std::string& text) {
    return shown(parsed(text));
}

RepoFile renamed(const wchar_t* path, const wchar_t* previousPath) {
    return {path, L"po:1", std::make_unique<File>(previousPath)};
}

TEST(CommitWriter, WritesACommitDatedNowInUniversalTime) {
    const kernel::ScopedClock clock(march5th2024);
    const std::vector<RepoFile> files = {{L"b.txt", L"po:2"}, {L"a.dwg", L"tf:a#1"}};
    const auto written =
        serializeCommit(files, L"ada", L"first", L"abc", {OdString(L"p"), OdString(L"o")});
    EXPECT_EQ(shown(written),
              record(R"({"annotation":{"author":"ada","date":"2024-03-05T14:07:09Z",)"
                     R"("message":"first"},"files":[{"path":"b.txt","storagePath":"po:2"},)"
                     R"({"path":"a.dwg","storagePath":"tf:a#1"}],)"
                     R"("hash":"abc","parentsHashes":["p","o"]})"));
}

TEST(CommitWriter, WritesEmptyListsForACommitOfNothing) {
    const kernel::ScopedClock clock(0);
    EXPECT_EQ(shown(serializeCommit({}, OdString(), OdString(), OdString(), {})),
              record(R"({"annotation":{"author":"","date":"1970-01-01T00:00:00Z","message":""},)"
                     R"("files":[],"hash":"","parentsHashes":[]})"));
}

TEST(CommitWriter, DatesEachCommitWhenItIsWritten) {
    const auto dateAt = [](std::int64_t timeMs) {
        const kernel::ScopedClock clock(timeMs);
        const auto written = serializeCommit({}, OdString(), OdString(), OdString(), {});
        return written.at(L"annotation").getObject().at(L"date").getString();
    };
    EXPECT_EQ(dateAt(951'868'799'999), L"2000-02-29T23:59:59Z");
    EXPECT_EQ(dateAt(951'868'800'000), L"2000-03-01T00:00:00Z");
    EXPECT_EQ(dateAt(-1), L"1969-12-31T23:59:59Z");
}

TEST(CommitWriter, WritesThePreviousPathOfARenamedFileOnly) {
    const kernel::ScopedClock clock(0);
    const std::vector<RepoFile> files = {renamed(L"new", L"old"), renamed(L"same", L"same"),
                                         renamed(L"empty", L""), renamed(L"Case", L"case")};
    const auto written = serializeCommit(files, OdString(), OdString(), OdString(), {});
    EXPECT_EQ(shown(written.at(L"files")),
              record(R"([{"path":"new","previousPath":"old","storagePath":"po:1"},)"
                     R"({"path":"same","storagePath":"po:1"},)"
                     R"({"path":"empty","storagePath":"po:1"},)"
                     R"({"path":"Case","previousPath":"case","storagePath":"po:1"}])"));
}

TEST(CommitWriter, WritesTheCommitAndItsReferences) {
    const kernel::ScopedClock clock(march5th2024);
    CommitInfo info;
    info.files = {{L"f", L"u"}};
    info.references = {{L"main", L"abc", RefType::Branch, {}}, {L"v1", L"def", RefType::Tag, {}}};
    info.parentHashes = {OdString(L"p")};
    info.hash = L"abc";
    info.author = L"ada";
    info.message = L"m";
    EXPECT_EQ(shown(serializeCommitInfo(info)),
              record(R"({"commits":[{"annotation":{"author":"ada","date":"2024-03-05T14:07:09Z",)"
                     R"("message":"m"},"files":[{"path":"f","storagePath":"u"}],"hash":"abc",)"
                     R"("parentsHashes":["p"]}],)"
                     R"("references":[{"commitHash":"abc","name":"main","refType":"branch"},)"
                     R"({"commitHash":"def","name":"v1","refType":"tag"}]})"));
}

TEST(CommitWriter, WritesNoReferencesAsAnEmptyList) {
    const kernel::ScopedClock clock(0);
    const jsonlib::json::Value written = serializeCommitInfo(CommitInfo());
    EXPECT_EQ(written.getObject().at(L"references"), parsed("[]"));
    EXPECT_EQ(written.getObject().at(L"commits").getArray().size(), 1U);
}

TEST(CommitWriter, WritesAnUnknownReferenceTypeLikeAnyOther) {
    const kernel::ScopedClock clock(0);
    CommitInfo info;
    info.references = {{L"n", L"c", static_cast<RefType>(2), {}},
                       {L"n", L"c", static_cast<RefType>(-1), {}}};
    const jsonlib::json::Value written = serializeCommitInfo(info);
    EXPECT_EQ(shown(written.getObject().at(L"references")),
              record(R"([{"commitHash":"c","name":"n","refType":"Unsupported reftype"},)"
                     R"({"commitHash":"c","name":"n","refType":"Unsupported reftype"}])"));
}

TEST(CommitWriter, LeavesWhatItWritesUnchanged) {
    const kernel::ScopedClock clock(0);
    const std::vector<RepoFile> files = {renamed(L"new", L"old")};
    EXPECT_EQ(shown(serializeCommit(files, L"a", L"m", L"h", {})),
              shown(serializeCommit(files, L"a", L"m", L"h", {})));
    EXPECT_EQ(files[0].path, L"new");
    EXPECT_EQ(files[0].file->path, L"old");
    EXPECT_EQ(files[0].file.use_count(), 1);
}

}  // namespace
