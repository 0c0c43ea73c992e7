#include <common/json/Writer.h>
#include <common/server/Commit.h>
#include <common/server/CommitNumber.h>
#include <common/server/FetchData.h>
#include <common/server/Reference.h>
#include <common/server/RepoData.h>
#include <common/server/ServerAnswer.h>
#include <platform/kernel/Clock.h>
#include <tests/common/server/Records.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

// Each of these records is also shown in docs/formats/server-records.md.
namespace {

using common::RefType;
using qrv_test::array;
using qrv_test::object;
using qrv_test::recordSample;
using testing::ElementsAre;

OdString sampleText(const std::string& name) {
    return OdString::fromNarrow(recordSample(name));
}

TEST(RecordSamples, HoldARepository) {
    const auto repository = common::deserializeRepoData(sampleText("repo-data"));
    ASSERT_TRUE(repository.hasValue());
    EXPECT_EQ(repository->name, L"Rathaus Umbau");
    EXPECT_EQ(repository->id, L"4711");
}

TEST(RecordSamples, HoldAListOfRepositories) {
    const auto repositories = common::deserializeRepoDatas(sampleText("repo-datas"));
    ASSERT_TRUE(repositories.hasValue());
    ASSERT_EQ(repositories->size(), 2U);
    EXPECT_EQ((*repositories)[0].name, L"Rathaus Umbau");
    EXPECT_EQ((*repositories)[1].name, L"Br\u00FCcke");
    EXPECT_EQ((*repositories)[1].id, L"4712");
}

TEST(RecordSamples, HoldAListOfReferences) {
    const auto references = common::deserializeReferences(sampleText("references"));
    ASSERT_TRUE(references.hasValue());
    ASSERT_EQ(references->size(), 2U);
    EXPECT_EQ((*references)[0].name, L"master");
    EXPECT_EQ((*references)[0].type, RefType::Branch);
    EXPECT_EQ((*references)[1].name, L"tender");
    EXPECT_EQ((*references)[1].type, RefType::Tag);
    EXPECT_FALSE((*references)[1].annotation.has_value());
}

TEST(RecordSamples, HoldTheResultOfAFetch) {
    const auto fetched = common::deserializeFetchData(object(recordSample("fetch-data")));
    ASSERT_TRUE(fetched.hasValue());
    EXPECT_EQ(fetched->repository.id, L"4711");
    ASSERT_EQ(fetched->references.size(), 1U);
    EXPECT_EQ(fetched->references[0].commitHash, L"c2");
    ASSERT_EQ(fetched->commits.size(), 2U);

    const common::Commit& first = fetched->commits[0];
    EXPECT_EQ(first.hash, L"c1");
    EXPECT_EQ(first.commitNo, 1U);
    EXPECT_EQ(first.annotation.author, L"ada@example.org");
    EXPECT_EQ(first.annotation.message, L"");
    EXPECT_EQ(first.annotation.date.packedValue(), 1'709'647'629'000);
    EXPECT_TRUE(first.parentHashes.empty());

    const common::Commit& second = fetched->commits[1];
    EXPECT_THAT(second.parentHashes, ElementsAre(OdString(L"c1")));
    ASSERT_EQ(second.files.size(), 2U);
    EXPECT_EQ(second.files[0].current.path, L"plans/ground floor.dwg");
    EXPECT_EQ(second.files[0].current.storagePath, L"tf:ground floor#2");
    EXPECT_EQ(second.files[0].previous, nullptr);
    EXPECT_EQ(second.files[1].previous->path, L"notes.txt");
}

TEST(RecordSamples, HoldCommitNumbers) {
    const auto pairs = common::deserializeCommitNumbers(array(recordSample("commit-numbers")));
    ASSERT_TRUE(pairs.hasValue());
    ASSERT_EQ(pairs->size(), 2U);
    EXPECT_EQ((*pairs)[0].hash, L"c1");
    EXPECT_EQ((*pairs)[0].commitNo, 1U);
    EXPECT_EQ((*pairs)[1].commitNo, 18'446'744'073'709'551'615U);
}

TEST(RecordSamples, HoldTheSingleAnswers) {
    EXPECT_EQ(common::deserializeInitData(object(recordSample("init-data"))).value(), L"4711");
    EXPECT_EQ(common::deserializeServerVersion(sampleText("server-version")).value(), L"3");
}

TEST(RecordSamples, HoldWhatANewCommitSends) {
    const kernel::ScopedClock clock(1'709'647'629'000);
    common::CommitInfo info;
    info.files = {{L"plans/ground floor.dwg", L"tf:ground floor#2"},
                  {L"notes/minutes.txt",
                   L"po:e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855",
                   std::make_unique<common::File>(L"notes.txt")}};
    info.references = {{L"master", L"c2", RefType::Branch, {}}};
    info.parentHashes = {OdString(L"c1")};
    info.hash = L"c2";
    info.author = L"ada@example.org";
    info.message = L"T\u00FCren versetzt";
    EXPECT_EQ(OdString(jsonlib::json::write(common::serializeCommitInfo(info))).toNarrow(),
              recordSample("commit-info"));
}

}  // namespace
