#include <common/json/Writer.h>
#include <common/server/Annotation.h>
#include <common/server/Commit.h>
#include <engine/base/Digest.h>
#include <engine/history/Commit.h>
#include <engine/history/CommitRecord.h>
#include <platform/kernel/OdTimeStamp.h>
#include <tests/engine/history/Repository.h>
#include <tests/support/Files.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

/// The record as the library makes and writes it.
std::string recordOfTheLibrary(const NewCommit& commit) {
    std::vector<common::RepoFile> files;
    for (const FileDelta& delta : commit.deltas) {
        if (delta.previousPath)
            files.emplace_back(delta.path, delta.url,
                               std::make_unique<common::File>(*delta.previousPath));
        else
            files.emplace_back(delta.path, delta.url);
    }
    std::sort(files.begin(), files.end(),
              [](const auto& left, const auto& right) { return left.path < right.path; });
    OdTimeStamp time;
    time.setPackedValue(commit.timeSeconds * 1000);
    jsonlib::json::Object record =
        common::serializeCommit(files, commit.author, commit.message, OdString(), commit.parents);
    record[L"annotation"] = common::serializeAnnotation(
        commit.author, time.strftime(L"%Y-%m-%dT%H:%M:%SZ"), commit.message);
    record.erase(L"hash");
    return OdString(jsonlib::json::write(std::move(record))).toNarrow();
}

TEST(CommitRecord, IsWrittenAsTheLibraryWritesIt) {
    std::mt19937 random(1);
    const auto text = [&random](std::size_t mostUnits) {
        static constexpr std::wstring_view units = L"ab \"\\\n\t\x7f\u00e4\u2028\uffee\u0001";
        std::wstring made;
        for (std::size_t length = random() % (mostUnits + 1); length > 0; --length)
            made += units[random() % units.size()];
        return OdString(made);
    };
    for (int trial = 0; trial < 300; ++trial) {
        NewCommit commit = {{}, text(9), text(20), static_cast<std::int64_t>(random()), {}};
        for (std::size_t count = random() % 3; count > 0; --count)
            commit.parents.emplace_back(std::wstring(64, L"0123"[count]));
        for (std::size_t count = random() % 40 * (random() % 40); count > 0; --count) {
            const std::string name = "x" + std::to_string(random() % 100000) + "\xC3\xA4\xFF '\"";
            FileDelta delta =
                file(name.substr(0, random() % 3 == 0 ? 10 : 3 + random() % 3).c_str(), '1', 1,
                     random() % 4 == 0 ? "b" : "");
            if (random() % 5 == 0)
                delta.url = OdString();
            commit.deltas.push_back(std::move(delta));
        }
        std::set<OdString> seen;
        std::erase_if(commit.deltas,
                      [&seen](const FileDelta& each) { return !seen.insert(each.path).second; });
        ASSERT_EQ(recordOf(commit), recordOfTheLibrary(commit));
    }
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
