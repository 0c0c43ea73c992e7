#include <engine/base/Digest.h>
#include <engine/history/Commit.h>
#include <tests/engine/history/Repository.h>
#include <tests/support/Files.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace {

using qrv::FileDelta;
using qrv::NewCommit;
using qrv_test::file;
using qrv_test::relative;
using qrv_test::removal;

NewCommit sample() {
    NewCommit commit;
    commit.parents = {OdString(std::wstring(64, L'7'))};
    commit.author = L"Ada";
    commit.message = OdString::fromNarrow("Turn the Gehäuse\nby 90\u00B0");
    commit.timeSeconds = 1709647629;
    commit.deltas = {
        file("notes.txt", '2', 20, "readme.txt"),
        removal("old.dwg"),
        {relative(L"plan.dwg"), L"tf:plan#" + qrv_test::url('3').mid(3), std::nullopt, 30}};
    return commit;
}

TEST(CommitHash, IsTheDigestOfItsRecord) {
    const std::string record = qrv_test::readFile(QRV_HISTORY_SAMPLES "/commit.sample");
    EXPECT_EQ(hashOf(sample()).toNarrow(), qrv::Digest::of(record));
}

TEST(CommitHash, IsTheSameForEver) {
    EXPECT_EQ(hashOf(sample()).toNarrow(),
              "13687ed685bd1cdcd80cd51cb26c0ba8d4f3c8e60efabd8422cd3ab60599bd0c");
    EXPECT_EQ(hashOf(NewCommit()).toNarrow(),
              "88142a23fc2a108c8970000c3e0f83eb7e7604bacdba359778afa9aabb0d7dd4");
}

TEST(CommitHash, DoesNotDependOnTheOrderOfTheDeltas) {
    NewCommit commit = sample();
    std::reverse(commit.deltas.begin(), commit.deltas.end());
    EXPECT_EQ(hashOf(commit), hashOf(sample()));
}

TEST(CommitHash, ChangesWithEachPartButTheSize) {
    std::vector<NewCommit> commits(10, sample());
    commits[1].parents.push_back(OdString(std::wstring(64, L'8')));
    commits[2].parents[0] = OdString(std::wstring(64, L'8'));
    commits[3].author = L"Bob";
    commits[4].message = OdString();
    commits[5].timeSeconds += 1;
    commits[6].deltas[0].path = relative(L"notes.TXT");
    commits[7].deltas[0].url = qrv_test::url('4');
    commits[8].deltas[0].previousPath.reset();
    commits[9].deltas.pop_back();
    std::set<OdString> hashes;
    for (const NewCommit& commit : commits)
        hashes.insert(hashOf(commit));
    EXPECT_EQ(hashes.size(), commits.size());

    NewCommit resized = sample();
    resized.deltas[0].sizeBytes = 21;
    EXPECT_EQ(hashOf(resized), hashOf(sample()));
}

TEST(CommitHash, OfTextsThatUtf8CannotHoldIsThatOfWhatComesBack) {
    qrv_test::Repository repository;
    NewCommit commit = sample();
    commit.parents.clear();
    commit.message = L"half a pair \xD83D";
    const auto entry = repository.history.add(commit);
    commit.message = entry.message;
    EXPECT_EQ(hashOf(commit), entry.hash);
}

}  // namespace
