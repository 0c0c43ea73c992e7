#include <engine/base/Digest.h>
#include <engine/storage/FrameStore.h>
#include <tests/engine/storage/Contents.h>
#include <tests/support/Effort.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::Database;
using qrv::DatabaseError;
using qrv::DatabaseTransaction;
using qrv::Digest;
using qrv::Frame;
using qrv::FrameLayout;
using qrv::FrameStore;
using qrv_test::MemoryReader;
using qrv_test::randomBytes;
using qrv_test::readAll;
using qrv_test::revision;
using testing::ElementsAre;
using testing::SizeIs;

constexpr FrameLayout layout = {.applicationId = 4711,
                                .longestChain = 16,
                                .longestSpanBytes = std::int64_t{1} << 30,
                                .worthPercent = 90};

FrameStore openedWith(const OdString& path, Database::Access access, const FrameLayout& frames) {
    return {std::make_shared<Database>(path, access), access, frames};
}

class FrameStoreTest : public testing::Test {
protected:
    static FrameStore open(const OdString& path) {
        FrameStore store = openedWith(path, Database::Access::create, layout);
        // Nobody cuts the power here, and without waiting for the disk it takes a tenth of the
        // time.
        store.database().execute("PRAGMA synchronous = OFF");
        return store;
    }

    // Adds contents behind the newest ones.
    Expected<FrameStore::Added> add(const std::string& contents) {
        MemoryReader reader(contents);
        DatabaseTransaction transaction(store_.database());
        Expected<FrameStore::Added> added = store_.add(reader, store_.newest());
        transaction.commit();
        return added;
    }
    void addRevisions(unsigned count) {
        for (unsigned number = 1; number <= count; ++number)
            ASSERT_TRUE(add(revision(number)));
    }
    void remove(const std::string& contents) {
        DatabaseTransaction transaction(store_.database());
        store_.remove(store_.find(Digest::of(contents)).value()).value();
        transaction.commit();
    }
    void setBytes(int frame, const std::string& bytes) {
        store_.database()
            .prepare("UPDATE pieces SET bytes = ? WHERE frame = ?")
            .run(std::string_view(bytes), frame);
    }
    // The contents, or the error with "FILE" for the path and "D1" for the digest of revision 1.
    std::string read(const std::string& contents) {
        try {
            const std::optional<Frame> frame = store_.find(Digest::of(contents));
            if (!frame)
                return "not there";
            const Expected<std::unique_ptr<qrv::VersionReader>> reader = store_.open(*frame);
            return withoutNames(reader ? readAll(**reader)
                                       : "error: " + reader.error().message.toNarrow());
        } catch (const DatabaseError& error) {
            return withoutNames("thrown: " + std::string(error.what()));
        }
    }
    std::string withoutNames(std::string text) const {
        if (!text.starts_with("error: ") && !text.starts_with("thrown: "))
            return text;
        for (unsigned number = 1; number <= 3; ++number)
            text = qrv_test::replaced(text, Digest::of(revision(number)),
                                      "D" + std::to_string(number));
        return qrv_test::replaced(text, path_.toNarrow(), "FILE");
    }
    // The numbers of the bases, 0 for a frame that stands alone.
    std::vector<std::int64_t> bases() {
        std::vector<std::int64_t> numbers;
        for (const Frame& frame : store_.frames())
            numbers.push_back(frame.base.value_or(0));
        return numbers;
    }
    std::size_t longestChain() {
        std::map<std::int64_t, std::size_t> lengths = {{0, 0}};
        for (const Frame& frame : store_.frames())
            lengths[frame.number] = lengths[frame.base.value_or(0)] + 1;
        return std::max_element(lengths.begin(), lengths.end(),
                                [](const auto& a, const auto& b) { return a.second < b.second; })
            ->second;
    }

    const qrv_test::TemporaryFolder folder_;
    const OdString path_ = folder_.text("frames");
    FrameStore store_ = open(path_);
};

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
    FrameLayout small = layout;
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

TEST_F(FrameStoreTest, ADamagedFrameIsAnErrorOfItsReader) {
    struct Case {
        const char* damage;
        const char* answer;
    };
    // Revision 2 is read, which is made against revision 1.
    const std::vector<Case> cases = {
        {"DELETE FROM pieces WHERE frame = 2",
         "error: The version D2 in 'FILE' is damaged: its contents are missing"},
        {"DELETE FROM pieces WHERE frame = 1",
         "error: The version D1 in 'FILE' is damaged: its contents are missing"},
        {"UPDATE pieces SET bytes = x'' WHERE frame = 2",
         "error: The version D2 in 'FILE' is damaged: its contents are missing"},
        {"UPDATE pieces SET position = 1 WHERE frame = 2",
         "error: The version D2 in 'FILE' is damaged: it ends too early"},
        {"UPDATE pieces SET bytes = substr(bytes, 1, length(bytes) - 1) WHERE frame = 1",
         "error: The version D1 in 'FILE' is damaged: it ends too early"},
        {"UPDATE pieces SET bytes = CAST(bytes || x'00' AS BLOB) WHERE frame = 2",
         "error: The version D2 in 'FILE' is damaged: it goes on behind its end"},
        {"INSERT INTO pieces VALUES (2, 1, x'00')",
         "error: The version D2 in 'FILE' is damaged: it goes on behind its end"},
        {"UPDATE pieces SET bytes = zeroblob(100) WHERE frame = 2",
         "error: The version D2 in 'FILE' is damaged: it is no frame"},
        {"UPDATE frames SET size = size + 1 WHERE number = 2",
         "error: The version D2 in 'FILE' is damaged: the size in its frame is another one"},
        {"UPDATE frames SET size = 1 << 40 WHERE number = 2",
         "error: The version D2 in 'FILE' is damaged: its size is impossible"},
        {"UPDATE frames SET size = 1 << 40 WHERE number = 1",
         "error: The version D2 in 'FILE' is damaged: one that it builds on is too long"},
        {"UPDATE pieces SET bytes = zeroblob((16 << 20) + 1) WHERE frame = 2",
         "error: The version D2 in 'FILE' is damaged: its size is impossible"},
        {"UPDATE pieces SET bytes = (SELECT bytes FROM pieces WHERE frame = 3) WHERE frame = 2",
         "error: The version D2 in 'FILE' is damaged: its contents are not those that were stored"},
        {"UPDATE frames SET base = NULL WHERE number = 2",
         "error: The version D2 in 'FILE' is damaged: Data corruption detected"},
        {"PRAGMA foreign_keys = OFF; DELETE FROM frames WHERE number = 1",
         "error: The version D2 in 'FILE' is damaged: one that it builds on is missing"},
        {"UPDATE frames SET base = 2 WHERE number = 2",
         "thrown: 'FILE' is damaged: its entry 2 cannot be"},
        {"UPDATE frames SET base = 3 WHERE number = 2",
         "thrown: 'FILE' is damaged: its entry 2 cannot be"},
        {"PRAGMA foreign_keys = OFF; UPDATE frames SET base = -1 WHERE number = 2",
         "thrown: 'FILE' is damaged: its entry 2 cannot be"},
        {"UPDATE frames SET size = -1 WHERE number = 2",
         "thrown: 'FILE' is damaged: its entry 2 cannot be"},
        {"UPDATE frames SET digest = x'00' WHERE number = 1",
         "thrown: 'FILE' is damaged: its entry 1 cannot be"},
        {"DROP TABLE pieces", "thrown: The database 'FILE' cannot be used: no such table: pieces"},
    };
    for (const Case& each : cases) {
        fs::remove(folder_ / "frames");
        store_ = open(path_);
        addRevisions(3);
        ASSERT_TRUE(read(revision(2)) == revision(2));

        store_.database().execute(each.damage);

        EXPECT_EQ(read(revision(2)), each.answer) << each.damage;
    }
}

TEST_F(FrameStoreTest, AChainThatIsTooLongIsNotFollowed) {
    addRevisions(17);
    EXPECT_TRUE(read(revision(17)) == revision(17));

    store_.database().execute("UPDATE frames SET base = 16 WHERE number = 17");

    EXPECT_THAT(read(revision(17)), testing::EndsWith("it builds on too many others"));
}

TEST_F(FrameStoreTest, NoChangedByteGivesWrongContents) {
    addRevisions(2);
    int errors = 0;
    int changes = 0;
    for (const int frame : {1, 2}) {
        qrv::Statement row = store_.database().prepare("SELECT bytes FROM pieces WHERE frame = ?");
        row.bind(frame);
        row.step();
        const std::string whole(row.bytes(0));
        EXPECT_FALSE(row.step());
        const std::size_t step = whole.size() / 40 + 1;
        for (std::size_t at = 0; at < whole.size(); at += step, ++changes) {
            std::string changed = whole;
            changed[at] = static_cast<char>(changed[at] ^ 1);
            setBytes(frame, changed);
            const std::string answer = read(revision(2));
            EXPECT_TRUE(answer == revision(2) || answer.starts_with("error: The version D")) << at;
            errors += answer == revision(2) ? 0 : 1;
        }
        setBytes(frame, whole);
    }
    // A bit or two of a frame mean nothing.
    EXPECT_GE(errors, changes - 2);
    qrv_test::tellTried(static_cast<std::size_t>(changes), "flipped bytes");
    EXPECT_TRUE(read(revision(2)) == revision(2));
}

TEST_F(FrameStoreTest, WhatContinuesADamagedFrameStandsAlone) {
    addRevisions(2);
    store_.database().execute("DELETE FROM pieces WHERE frame = 1");

    add(revision(3)).value();

    EXPECT_THAT(bases(), ElementsAre(0, 1, 0));
    EXPECT_TRUE(read(revision(3)) == revision(3));
}

TEST_F(FrameStoreTest, DoesNotRemoveWhatADamagedFrameBuildsOn) {
    addRevisions(3);
    store_.database().execute("DELETE FROM pieces WHERE frame = 2");
    DatabaseTransaction transaction(store_.database());

    EXPECT_EQ(
        withoutNames("error: " + store_.remove(store_.frames()[0]).error().message.toNarrow()),
        "error: The version D2 in 'FILE' is damaged: its contents are missing");
}

std::string complaintOfOpening(const OdString& path, Database::Access access) {
    try {
        FrameStore store = openedWith(path, access, layout);
        store.frames();
    } catch (const DatabaseError& error) {
        return qrv_test::replaced(error.what(), path.toNarrow(), "FILE");
    }
    return "none";
}

TEST_F(FrameStoreTest, RefusesFilesThatAreNotItsOwn) {
    store_.database().setSchemaVersion(2);
    EXPECT_EQ(complaintOfOpening(path_, Database::Access::readOnly),
              "'FILE' was written by a newer version of this program");
    store_.database().setSchemaVersion(-1);
    EXPECT_EQ(complaintOfOpening(path_, Database::Access::readOnly),
              "'FILE' is a file of another kind");
    store_.database().setSchemaVersion(1);
    EXPECT_EQ(complaintOfOpening(path_, Database::Access::readOnly), "none");
    store_.database().execute("PRAGMA application_id = 4712");
    EXPECT_EQ(complaintOfOpening(path_, Database::Access::create),
              "'FILE' is a file of another kind");
    qrv_test::writeFile(folder_ / "text", std::string(5000, 'x'));
    EXPECT_EQ(complaintOfOpening(folder_.text("text"), Database::Access::create),
              "The database 'FILE' cannot be used: file is not a database");
}

TEST_F(FrameStoreTest, AnEmptyFileIsAnEmptyStore) {
    qrv_test::writeFile(folder_ / "empty", "");
    store_ = openedWith(folder_.text("empty"), Database::Access::readWrite, layout);
    EXPECT_EQ(read(revision(1)), "not there");
    EXPECT_THAT(store_.frames(), SizeIs(0));

    store_ = open(folder_.text("empty"));
    add(revision(1)).value();
    EXPECT_TRUE(read(revision(1)) == revision(1));
}

TEST_F(FrameStoreTest, ATruncatedFileIsAnError) {
    addRevisions(3);
    const std::string bytes = qrv_test::readFile(folder_ / "frames");
    for (std::size_t size = 512; size < bytes.size(); size += 512) {
        const OdString path = folder_.text("cut" + std::to_string(size));
        qrv_test::writeFile(path.toNarrow(), std::string_view(bytes).substr(0, size));
        try {
            store_ = openedWith(path, Database::Access::readWrite, layout);
            const std::string answer = read(revision(3));
            EXPECT_FALSE(answer == revision(3)) << size;
        } catch (const DatabaseError& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr("cannot be used"));
        }
    }
}

}  // namespace
