#include <tests/engine/storage/FrameStoreFile.h>
#include <tests/support/Effort.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::Database;
using qrv::DatabaseError;
using qrv::DatabaseTransaction;
using qrv::FrameStore;
using qrv_test::openedWith;
using qrv_test::revision;
using qrv_test::testLayout;
using testing::ElementsAre;
using testing::SizeIs;

using FrameStoreDamage = qrv_test::FrameStoreFile;

TEST_F(FrameStoreDamage, ADamagedFrameIsAnErrorOfItsReader) {
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

TEST_F(FrameStoreDamage, AChainThatIsTooLongIsNotFollowed) {
    addRevisions(17);
    EXPECT_TRUE(read(revision(17)) == revision(17));

    store_.database().execute("UPDATE frames SET base = 16 WHERE number = 17");

    EXPECT_THAT(read(revision(17)), testing::EndsWith("it builds on too many others"));
}

TEST_F(FrameStoreDamage, NoChangedByteGivesWrongContents) {
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

TEST_F(FrameStoreDamage, WhatContinuesADamagedFrameStandsAlone) {
    addRevisions(2);
    store_.database().execute("DELETE FROM pieces WHERE frame = 1");

    add(revision(3)).value();

    EXPECT_THAT(bases(), ElementsAre(0, 1, 0));
    EXPECT_TRUE(read(revision(3)) == revision(3));
}

TEST_F(FrameStoreDamage, DoesNotRemoveWhatADamagedFrameBuildsOn) {
    addRevisions(3);
    store_.database().execute("DELETE FROM pieces WHERE frame = 2");
    DatabaseTransaction transaction(store_.database());

    EXPECT_EQ(
        withoutNames("error: " + store_.remove(store_.frames()[0]).error().message.toNarrow()),
        "error: The version D2 in 'FILE' is damaged: its contents are missing");
}

std::string complaintOfOpening(const OdString& path, Database::Access access) {
    try {
        FrameStore store = openedWith(path, access, testLayout);
        store.frames();
    } catch (const DatabaseError& error) {
        return qrv_test::replaced(error.what(), path.toNarrow(), "FILE");
    }
    return "none";
}

TEST_F(FrameStoreDamage, RefusesFilesThatAreNotItsOwn) {
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

TEST_F(FrameStoreDamage, AnEmptyFileIsAnEmptyStore) {
    qrv_test::writeFile(folder_ / "empty", "");
    store_ = openedWith(folder_.text("empty"), Database::Access::readWrite, testLayout);
    EXPECT_EQ(read(revision(1)), "not there");
    EXPECT_THAT(store_.frames(), SizeIs(0));

    store_ = open(folder_.text("empty"));
    add(revision(1)).value();
    EXPECT_TRUE(read(revision(1)) == revision(1));
}

TEST_F(FrameStoreDamage, ATruncatedFileIsAnError) {
    addRevisions(3);
    const std::string bytes = qrv_test::readFile(folder_ / "frames");
    for (std::size_t size = 512; size < bytes.size(); size += 512) {
        const OdString path = folder_.text("cut" + std::to_string(size));
        qrv_test::writeFile(path.toNarrow(), std::string_view(bytes).substr(0, size));
        try {
            store_ = openedWith(path, Database::Access::readWrite, testLayout);
            const std::string answer = read(revision(3));
            EXPECT_FALSE(answer == revision(3)) << size;
        } catch (const DatabaseError& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr("cannot be used"));
        }
    }
}

}  // namespace
