#include <tests/engine/storage/FrameStoreFile.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::Database;
using qrv::DatabaseTransaction;
using qrv::Frame;
using qrv::FrameLayout;
using qrv::FrameStore;
using qrv_test::MemoryReader;
using qrv_test::openedWith;
using qrv_test::randomBytes;
using qrv_test::revision;
using qrv_test::testLayout;
using testing::ElementsAre;
using testing::SizeIs;

using FrameStoreTest = qrv_test::FrameStoreFile;

TEST_F(FrameStoreTest, GivesBackWhatWasAdded) {
    const std::vector<std::string> contents = {"", "a", revision(1), revision(2),
                                               randomBytes(100000, 5)};
    for (const std::string& each : contents)
        EXPECT_TRUE(add(each)->isNew);

    store_ = open(path_);

    for (const std::string& each : contents)
        EXPECT_TRUE(read(each) == each) << each.size();
    EXPECT_EQ(read("b"), "not there");
}

TEST_F(FrameStoreTest, KeepsEqualContentsOnce) {
    const Frame first = add(revision(1))->frame;
    add(revision(2)).value();
    const std::string before = qrv_test::readFile(folder_ / "frames");

    const FrameStore::Added again = add(revision(1)).value();

    EXPECT_EQ(again.frame, first);
    EXPECT_FALSE(again.isNew);
    EXPECT_TRUE(qrv_test::readFile(folder_ / "frames") == before);
}

TEST_F(FrameStoreTest, KeepsARevisionAsADifference) {
    const Frame first = add(revision(1))->frame;
    const Frame second = add(revision(2))->frame;

    EXPECT_EQ(second.base, first.number);
    EXPECT_GT(store_.storedBytes(first), 4000);
    EXPECT_LT(store_.storedBytes(second), 60);
}

TEST_F(FrameStoreTest, ContentsThatHaveNothingInCommonStandAlone) {
    add(randomBytes(4000, 1)).value();
    add(randomBytes(4000, 2)).value();
    add("").value();
    add(revision(1)).value();

    EXPECT_THAT(bases(), ElementsAre(0, 0, 0, 0));
}

TEST_F(FrameStoreTest, AFullChainBranchesOffNearItsBeginning) {
    addRevisions(34);

    const std::vector<std::int64_t> all = bases();
    EXPECT_THAT(std::vector<std::int64_t>(all.begin(), all.begin() + 3), ElementsAre(0, 1, 2));
    EXPECT_THAT(std::vector<std::int64_t>(all.begin() + 14, all.begin() + 18),
                ElementsAre(14, 15, 1, 17));
    EXPECT_THAT(std::vector<std::int64_t>(all.begin() + 30, all.end()),
                ElementsAre(30, 17, 32, 33));
    EXPECT_EQ(longestChain(), 16);
}

TEST_F(FrameStoreTest, OneFrameThatStandsAloneServes136Revisions) {
    addRevisions(137);

    std::vector<std::int64_t> all = bases();
    EXPECT_EQ(all[136], 0);
    EXPECT_EQ(std::count(all.begin(), all.end(), 0), 2);
    EXPECT_EQ(longestChain(), 16);
    for (unsigned number = 1; number <= 137; ++number)
        EXPECT_TRUE(read(revision(number)) == revision(number)) << number;
}

TEST_F(FrameStoreTest, SplitsALongFrameIntoPieces) {
    const std::string contents = randomBytes((std::size_t{16} << 20) + 5, 1);
    add(contents).value();

    qrv::Statement pieces = store_.database().prepare("SELECT count(*) FROM pieces");
    pieces.step();
    EXPECT_EQ(pieces.integer(0), 2);
    EXPECT_TRUE(read(contents) == contents);
}

TEST_F(FrameStoreTest, WhatIsLongerThanTheSpanStandsAlone) {
    FrameLayout small = testLayout;
    small.longestSpanBytes = 7999;
    store_ = openedWith(path_, Database::Access::create, small);
    addRevisions(2);
    EXPECT_THAT(bases(), ElementsAre(0, 0));

    small.longestSpanBytes = 8000;
    store_ = openedWith(path_, Database::Access::create, small);
    add(revision(3)).value();
    EXPECT_THAT(bases(), ElementsAre(0, 0, 2));
}

TEST_F(FrameStoreTest, ContentsThatCannotBeReadAreNotAdded) {
    for (const bool isFirst : {true, false}) {
        MemoryReader broken(revision(isFirst ? 1 : 2), 3000);
        DatabaseTransaction transaction(store_.database());
        EXPECT_EQ(store_.add(broken, store_.newest()).error().message,
                  OdString("The disk is broken"));
        transaction.commit();
        EXPECT_THAT(store_.frames(), SizeIs(isFirst ? 0 : 1));
        EXPECT_EQ(store_.database().damage(), OdString());
        add(revision(1)).value();
    }
    qrv::Statement pieces = store_.database().prepare("SELECT count(*) FROM pieces");
    pieces.step();
    EXPECT_EQ(pieces.integer(0), 1);
}

TEST_F(FrameStoreTest, AFailureLeavesNoPieceBehind) {
    constexpr std::size_t mebibyte = 1 << 20;
    MemoryReader broken(randomBytes(20 * mebibyte, 1), 19 * mebibyte);
    DatabaseTransaction transaction(store_.database());

    EXPECT_FALSE(store_.add(broken, std::nullopt));

    transaction.commit();
    qrv::Statement pieces = store_.database().prepare("SELECT count(*) FROM pieces");
    pieces.step();
    EXPECT_EQ(pieces.integer(0), 0);
}

TEST_F(FrameStoreTest, RemovingOneLeavesTheOthers) {
    constexpr unsigned count = 20;
    for (unsigned removed = 1; removed <= count; ++removed) {
        const OdString path = folder_.text("remove" + std::to_string(removed));
        store_ = open(path);
        addRevisions(count);

        remove(revision(removed));

        for (unsigned number = 1; number <= count; ++number)
            EXPECT_TRUE(read(revision(number)) ==
                        (number == removed ? "not there" : revision(number)))
                << removed << " " << number;
        EXPECT_LE(longestChain(), 16);
        const std::vector<std::int64_t> all = bases();
        EXPECT_EQ(std::count(all.begin(), all.end(), 0), 1) << removed;
    }
}

TEST_F(FrameStoreTest, RemovingAllLeavesASmallFile) {
    addRevisions(20);
    const auto before = fs::file_size(folder_ / "frames");
    for (unsigned number = 1; number <= 20; ++number)
        remove(revision(number));

    EXPECT_THAT(store_.frames(), SizeIs(0));
    EXPECT_LT(fs::file_size(folder_ / "frames"), before);
    EXPECT_LT(fs::file_size(folder_ / "frames"), 40000);
    add(revision(1)).value();
    EXPECT_TRUE(read(revision(1)) == revision(1));
}

}  // namespace
