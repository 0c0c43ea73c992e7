#include <tests/engine/history/Repository.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>

// Whoever changes the file by hand gets an error where the value would be used.
namespace {

using common::RefType;
using qrv::History;
using qrv_test::file;
using qrv_test::Repository;

struct Case {
    const char* tampering;
    std::function<void(History&, const OdString& head)> use;
    std::string complaint;
};

void useDeltas(History& history, const OdString& head) {
    history.deltas(head);
}
void useTree(History& history, const OdString& head) {
    history.tree(head);
}
void useCommit(History& history, const OdString& head) {
    history.commit(head);
}
void useAncestors(History& history, const OdString& head) {
    history.ancestors(head);
}
void useHeadFiles(History& history, const OdString&) {
    history.headFiles();
}
void useReferences(History& history, const OdString&) {
    history.references();
}
void useReference(History& history, const OdString&) {
    history.reference(L"master", RefType::Branch);
}
void useBuildsOn(History& history, const OdString& head) {
    history.buildsOn(head, history.commitByNumber(1)->hash);
}

/// Runs each case on a history of three commits, of which the branch names the last one.
void expectComplaints(const std::vector<Case>& cases) {
    for (const Case& each : cases) {
        Repository repository;
        const OdString one = repository.add({}, "one", {file("a", '1')});
        const OdString two = repository.add({one}, "two", {file("a", '2')});
        const OdString head = repository.add({two}, "three", {file("b", '2', 1, "a")});
        repository.history.changeHeadFiles({file("b", '2')});
        repository.history.setReference(L"master", RefType::Branch, head);
        ASSERT_EQ(repository.complaint([&] { each.use(repository.history, head); }),
                  "no complaint");
        repository.tamper(each.tampering);
        EXPECT_EQ(repository.complaint([&] { each.use(repository.history, head); }), each.complaint)
            << each.tampering;
    }
}

TEST(Distrust, OfPathsUrlsAndSizes) {
    const std::string badPath =
        "The history 'DB' is damaged: '../b' cannot be used as a path: it has a component of dots "
        "or blanks only";
    const std::string badUrl =
        "The history 'DB' is damaged: 'po:../x' does not name a stored version";
    const std::string badSize = "The history 'DB' is damaged: -5 is no size of a file";
    expectComplaints({
        {"UPDATE changes SET path = '../b' WHERE number = 3", useDeltas, badPath},
        {"UPDATE changes SET path = '../b' WHERE number = 3", useTree, badPath},
        {"UPDATE changes SET previous_path = '../b' WHERE number = 3", useTree, badPath},
        {"UPDATE head_files SET path = '../b'", useHeadFiles, badPath},
        {"UPDATE changes SET url = CAST('po:../x' AS BLOB)", useDeltas, badUrl},
        {"UPDATE changes SET url = CAST('po:../x' AS BLOB)", useTree, badUrl},
        {"UPDATE head_files SET url = CAST('po:../x' AS BLOB)", useHeadFiles, badUrl},
        {"UPDATE head_files SET url = x''", useHeadFiles,
         "The history 'DB' is damaged: '' does not name a stored version"},
        {"UPDATE changes SET size = -5", useTree, badSize},
        {"UPDATE head_files SET size = -5", useHeadFiles, badSize},
    });
}

TEST(Distrust, OfCommits) {
    expectComplaints({
        {"UPDATE commits SET time = 253402300800", useCommit,
         "The history 'DB' is damaged: 253402300800 is no time of a commit"},
        {"UPDATE commits SET hash = 'ABC' WHERE number = 2", useCommit,
         "The history 'DB' is damaged: 'ABC' is no hash"},
        {"UPDATE commits SET hash = 'ABC' WHERE number = 2", useAncestors,
         "The history 'DB' is damaged: 'ABC' is no hash"},
        {"UPDATE commits SET number = -3 WHERE number = 3", useCommit,
         "The history 'DB' is damaged: -3 is no number of a commit"},
        {"UPDATE commits SET number = 9223372036854775807 WHERE number = 3",
         [](History& history, const OdString&) { history.lastNumber(); },
         "The history 'DB' is damaged: 9223372036854775807 is no number of a commit"},
    });
}

TEST(Distrust, OfParents) {
    const std::string missing = "The history 'DB' is damaged: commit 3 cannot build on commit 2";
    const std::string circle = "The history 'DB' is damaged: commit 2 cannot build on commit 3";
    const std::string itself = "The history 'DB' is damaged: commit 3 cannot build on commit 3";
    expectComplaints({
        {"DELETE FROM commits WHERE number = 2", useCommit, missing},
        {"DELETE FROM commits WHERE number = 2", useAncestors, missing},
        {"UPDATE parents SET parent = 3 WHERE number = 2", useAncestors, circle},
        {"UPDATE parents SET parent = 3 WHERE number = 2", useTree, circle},
        {"UPDATE parents SET parent = 3 WHERE number = 2", useBuildsOn, circle},
        {"UPDATE parents SET parent = 3 WHERE number = 3", useCommit, itself},
        {"UPDATE parents SET parent = 3 WHERE number = 3", useTree, itself},
        {"UPDATE parents SET parent = 0 WHERE number = 3", useBuildsOn,
         "The history 'DB' is damaged: 0 is no number of a commit"},
    });
}

TEST(Distrust, OfTheMergeBase) {
    Repository repository;
    const OdString one = repository.add({}, "one");
    const OdString left = repository.add({one}, "left");
    const OdString right = repository.add({one}, "right");
    repository.tamper("DELETE FROM commits WHERE number = 1");
    EXPECT_EQ(repository.complaint([&] { repository.history.mergeBase(left, right); }),
              "The history 'DB' is damaged: commit 1 is missing");
}

TEST(Distrust, OfReferences) {
    const std::string dangling =
        "The history 'DB' is damaged: the reference 'master' names no commit";
    const std::string unnamed =
        "The history 'DB' is damaged: 'a b' cannot be the name of a branch or tag: it has a blank "
        "in it";
    expectComplaints({
        {"UPDATE refs SET number = 7", useReferences, dangling},
        {"UPDATE refs SET number = 7", useReference, dangling},
        {"UPDATE refs SET name = 'a b'", useReferences, unnamed},
        {"UPDATE refs SET type = 'twig'", useReferences,
         "The history 'DB' is damaged: 'twig' is no kind of reference"},
    });
}

TEST(Distrust, OfTheTablesThemselves) {
    expectComplaints({
        {"DROP TABLE head_files", useHeadFiles,
         "The database 'DB' cannot be used: no such table: head_files"},
        {"DROP TABLE head_files; CREATE VIEW head_files AS SELECT 'a' AS path, 'b' AS url, 1 AS "
         "size, 1 AS number, 1 AS modified, 1 AS changed",
         useHeadFiles,
         "The database 'DB' cannot be used: access to view \"head_files\" prohibited"},
    });
}

}  // namespace
