#include <engine/database/Database.h>
#include <tests/cli/commands/VerifyProject.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::flipByte;
using qrv_test::middleOfFrame;
using qrv_test::noise;
using qrv_test::Outcome;

using VerifyDamage = qrv_test::VerifyProject;

TEST_F(VerifyDamage, FindsAFlippedBitOfAnObject) {
    flipByte(object("1;bolt\n"), 3);
    EXPECT_EQ(project.qrv({"verify"}),
              problem(counts, "The stored version 'po:" + digestOf("1;bolt\n") +
                                  "' is damaged: its contents have another digest (it is "
                                  "'parts.csv' in commit 1)"));
}

TEST_F(VerifyDamage, NamesTheFirstOfSeveralFilesAndCountsTheOthers) {
    project.write({{"copies/parts.csv", "1;bolt\n"}, {"parts.csv", "1;bolt\n"}});
    project.commit("third");
    flipByte(object("1;bolt\n"), 3);
    EXPECT_THAT(project.qrv({"verify"}).output,
                testing::HasSubstr("' is damaged: its contents have another digest (it is "
                                   "'parts.csv' in commit 1, and named 2 times more)\n"));
}

TEST_F(VerifyDamage, FindsAFlippedBitOfAPackedObject) {
    project.write({{"parts.csv", noise(90000)}});
    project.commit("third");
    project.run({"gc"});
    const fs::path pack = fs::directory_iterator(project / ".qrv/packs")->path();
    flipByte(pack, 20000);
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, testing::HasSubstr("Packed objects: 4\n"));
    EXPECT_THAT(outcome.output,
                testing::HasSubstr("The version " + digestOf(noise(90000)) + " in '.qrv/packs/" +
                                   pack.filename().string() + "' is damaged: "));
    EXPECT_THAT(outcome.output, testing::HasSubstr("(it is 'parts.csv' in commit 3)"));
    EXPECT_EQ(project.qrv({"verify", "--quick"}).status, 0);
}

TEST_F(VerifyDamage, FindsAMissingPackAlsoInAQuickLook) {
    project.run({"gc"});
    EXPECT_EQ(project.run({"verify", "--quick"}),
              "Commits: 2\nObjects: 0\nPacked objects: 3\nDrawing versions: 1\n"
              "Everything that was kept is there; its contents were not read\n");
    fs::remove_all(project / ".qrv/packs");
    for (const char* const how : {"--quick", "--json"}) {
        const Outcome outcome = project.qrv({"verify", how});
        EXPECT_EQ(outcome.messages, "qrv: Problems: 4\n") << how;
        EXPECT_THAT(outcome.output, testing::HasSubstr("' is not in the repository (it is "
                                                       "'plan.dwg' in commit 1)"));
    }
}

TEST_F(VerifyDamage, FindsAFlippedBitOfADrawing) {
    flipByte(store(), middleOfFrame(store()));
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, testing::StartsWith(counts + "\nProblems:\n  The version " +
                                                    digestOf(noise(40000)) + " in '" +
                                                    store().string() + "' is damaged: "));
    EXPECT_EQ(outcome.messages, "qrv: Problems: 1\n");
}

TEST_F(VerifyDamage, FindsATruncatedDrawingStore) {
    fs::resize_file(store(), fs::file_size(store()) / 2);
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output,
                testing::HasSubstr("\n  The database '" + store().string() + "' cannot be used: "));
    EXPECT_THAT(outcome.output, testing::HasSubstr("(it is 'plan.dwg' in commit 1)"));
}

TEST_F(VerifyDamage, FindsAnEmptiedAndAMissingDrawingStore) {
    const std::string url = "tf:" + store().stem().string() + "#" + digestOf(noise(40000));
    const std::string missing =
        "The stored version '" + url + "' is not in the repository (it is 'plan.dwg' in commit 1)";
    const std::string none = "Commits: 2\nObjects: 3\nPacked objects: 0\nDrawing versions: 0\n";
    fs::resize_file(store(), 0);
    EXPECT_EQ(project.qrv({"verify"}), problem(none, missing));
    fs::remove(store());
    EXPECT_EQ(project.qrv({"verify"}), problem(none, missing));
}

TEST_F(VerifyDamage, FindsACutHistory) {
    fs::resize_file(project / ".qrv/qrv.db", 5000);
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output,
                testing::HasSubstr("Problems:\n  The database '" + root + "/.qrv/qrv.db' "));
}

TEST_F(VerifyDamage, FindsAMissingHistory) {
    const std::string none = "Commits: 0\nObjects: 3\nPacked objects: 0\nDrawing versions: 1\n";
    const std::string missing =
        "\nProblems:\n  The history '" + root +
        "/.qrv/qrv.db' is missing or empty, although '.qrv/references' shows";
    fs::resize_file(project / ".qrv/qrv.db", 0);
    EXPECT_THAT(project.qrv({"verify"}).output, testing::StartsWith(none + missing));
    fs::remove(project / ".qrv/qrv.db");
    EXPECT_THAT(project.qrv({"verify"}).output, testing::StartsWith(none + missing));
    EXPECT_EQ(project.qrv({"verify"}).status, 1);
}

TEST_F(VerifyDamage, FindsACommitThatSomebodyChanged) {
    {
        qrv::Database history(OdString::fromNarrow(root + "/.qrv/qrv.db"),
                              qrv::Database::Access::readWrite);
        history.execute("UPDATE commits SET author = 'eve' WHERE number = 2");
    }
    EXPECT_EQ(project.qrv({"verify"}),
              problem(counts, "The history '" + root +
                                  "/.qrv/qrv.db' is damaged: commit 2 is not the one that its "
                                  "hash names"));
}

// What one block holds is lost when a bit of it is another, and nothing else.
TEST(VerifyPacks, FindsAFlippedBitAndSaysWhoseItIs) {
    const qrv_test::HistoryProject project;
    project.write({{"plan.dwg", qrv_test::noise(80000)}, {"parts.csv", "1;bolt\n"}});
    project.commit("first");
    const auto pack = std::filesystem::directory_iterator(project / ".qrv/packs")->path();
    const std::string counts = "Commits: 1\nObjects: 0\nPacked objects: 2\nDrawing versions: 1\n";
    EXPECT_EQ(project.run({"verify"}), counts + "Everything that was kept is there and whole\n");

    qrv_test::flipByte(pack, qrv_test::readFile(pack).size() / 2);

    const qrv_test::Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output,
                testing::StartsWith(counts + "\nProblems:\n  The version " +
                                    qrv::Digest::of(qrv_test::noise(80000)) + " in '.qrv/packs/" +
                                    pack.filename().string() + "' is damaged: "));
    EXPECT_THAT(outcome.output, testing::EndsWith(" (it is 'plan.dwg' in commit 1)\n"));
    EXPECT_EQ(project.qrv({"restore", "--force", "parts.csv"}).status, 0);
}

TEST(VerifyPacks, FindsAPackThatIsNoneAndWhatDoesNotBelongThere) {
    const qrv_test::HistoryProject project;
    project.write({{"parts.csv", "1;bolt\n"}});
    project.commit("first");
    qrv_test::writeFile(project / ".qrv/packs/0123456789abcdef.pack", "no pack");
    qrv_test::writeFile(project / ".qrv/packs/readme", "?");
    const qrv_test::Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(
        outcome.output,
        testing::HasSubstr("'.qrv/packs/0123456789abcdef.pack' is damaged: it is too short\n"));
    EXPECT_THAT(outcome.output,
                testing::HasSubstr("'.qrv/packs/readme' is nothing that belongs there\n"));
}

}  // namespace
