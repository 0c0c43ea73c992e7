#include <cli/terminal/Progress.h>
#include <engine/base/Digest.h>
#include <engine/database/Database.h>
#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/storage/OldForms.h>

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::Digest;
using qrv_test::contentsOf;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::writeFile;

using Days = std::chrono::duration<int, std::ratio<86400>>;

void makeOlder(const fs::path& file, Days age) {
    fs::last_write_time(file, fs::file_time_type::clock::now() - age);
}

/// A parts list of many lines, so that two of them differ in little.
std::string partsList(int version) {
    std::string text;
    for (int line = 0; line < 2000; ++line)
        text += Digest::of(std::to_string(line)).substr(0, 16) + "\n";
    return text + std::to_string(version) + "\n";
}

/// Four commits of a parts list, kept as earlier programs kept them.
class GcCommand : public testing::Test {
protected:
    GcCommand() {
        for (int version = 1; version <= 4; ++version) {
            project.write({{"parts.csv", partsList(version)}});
            project.commit(std::to_string(version));
        }
        qrv_test::toOldForms(project.folder);
    }

    std::set<std::string> plainObjects() const {
        std::set<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(project / ".qrv/objects"))
            names.insert(entry.path().filename());
        return names;
    }
    std::string ignoreFile() const { return readFile(project / ".qrv/properties/ignore"); }
    /// Of the objects, the pack and the drawing stores.
    std::uintmax_t storedBytes() const {
        std::uintmax_t bytes = 0;
        for (const auto& entry : fs::recursive_directory_iterator(project / ".qrv")) {
            const std::string path = entry.path();
            const bool counts = path.find("/objects") != std::string::npos ||
                                path.find("/tf/") != std::string::npos;
            if (counts && entry.is_regular_file())
                bytes += entry.file_size();
        }
        return bytes;
    }
    std::string stored() const {
        return qrv::cli::sizeText(static_cast<std::int64_t>(storedBytes())).toNarrow();
    }
    /// Each version of the parts list, as it is restored.
    void expectAllVersions() const {
        for (int version = 1; version <= 4; ++version) {
            project.run({"restore", "--from", "#" + std::to_string(version), "parts.csv"});
            EXPECT_EQ(readFile(project / "parts.csv"), partsList(version)) << version;
        }
        EXPECT_EQ(project.qrv({"verify"}).status, 0);
    }
    fs::path storeUnnamedObject(const std::string& contents) const {
        const fs::path object = project / (".qrv/objects/" + Digest::of(contents));
        writeFile(object, contents);
        return object;
    }
    fs::path store() const { return fs::directory_iterator(project / ".qrv/tf")->path(); }

    const HistoryProject project;
    const std::size_t listBytes = partsList(1).size();
};

TEST_F(GcCommand, PacksWhatHeadDoesNotNeed) {
    const std::string before = stored();
    const Outcome outcome = project.qrv({"gc"});
    EXPECT_EQ(outcome, (Outcome{0,
                                "Objects packed: 3 (102 KB)\n"
                                "Objects dropped: 0 (0 bytes)\n"
                                "Drawing versions dropped: 0 (0 bytes)\n"
                                "Leftovers removed: 0 (0 bytes)\n"
                                "Stored: " +
                                    before + " before, " + stored() + " now\n",
                                ""}));
    const std::set<std::string> needed = {Digest::of(ignoreFile()), Digest::of(partsList(4))};
    EXPECT_EQ(plainObjects(), needed);
    expectAllVersions();
}

TEST_F(GcCommand, KeepsOneVersionAndTheDifferencesToTheOthers) {
    project.run({"gc"});
    // Each line has 8 bytes of noise in its 17, so that one list takes nearly half its size.
    EXPECT_LT(fs::file_size(project / ".qrv/objects.pack"), 2 * listBytes);
}

TEST_F(GcCommand, LeavesTheFilesOfEveryBranchPlain) {
    project.run({"switch", "--create", "side", "#2"});
    project.run({"switch", "master"});
    project.run({"gc"});
    const std::set<std::string> needed = {Digest::of(ignoreFile()), Digest::of(partsList(2)),
                                          Digest::of(partsList(4))};
    EXPECT_EQ(plainObjects(), needed);
    expectAllVersions();
}

TEST_F(GcCommand, FindsNothingToDoASecondTime) {
    project.run({"gc"});
    const std::string bytes = std::to_string(storedBytes());
    EXPECT_EQ(project.run({"gc", "--json"}),
              "{\n"
              "    \"bytesAfter\" : " +
                  bytes +
                  ",\n"
                  "    \"bytesBefore\" : " +
                  bytes + R"(,
    "droppedDrawingVersions" : {
        "bytes" : 0,
        "count" : 0
    },
    "droppedObjects" : {
        "bytes" : 0,
        "count" : 0
    },
    "dryRun" : false,
    "leftovers" : {
        "bytes" : 0,
        "count" : 0
    },
    "packed" : {
        "bytes" : 0,
        "count" : 0
    },
    "problems" : [
    ]
}
)");
}

TEST_F(GcCommand, GoesOnWhereAKilledRunEnded) {
    const fs::path object = project / (".qrv/objects/" + Digest::of(partsList(2)));
    project.run({"gc"});
    writeFile(object, partsList(2));
    project.run({"gc"});
    EXPECT_FALSE(fs::exists(object));
    expectAllVersions();
}

TEST_F(GcCommand, OnlyTellsInADryRun) {
    makeOlder(storeUnnamedObject("nobody's"), Days(15));
    writeFile(project / ".qrv/objects/.17-1.qrv-tmp", "half");
    makeOlder(project / ".qrv/objects/.17-1.qrv-tmp", Days(2));
    const std::string bytes = stored();
    const auto before = contentsOf(project.folder.path());
    EXPECT_EQ(project.qrv({"gc", "--dry-run"}), (Outcome{0,
                                                         "Objects to pack: 3 (102 KB)\n"
                                                         "Objects to drop: 1 (8 bytes)\n"
                                                         "Drawing versions to drop: 0 (0 bytes)\n"
                                                         "Leftovers to remove: 1 (4 bytes)\n"
                                                         "Stored: " +
                                                             bytes + "\n",
                                                         ""}));
    EXPECT_EQ(contentsOf(project.folder.path()), before);
}

TEST_F(GcCommand, DropsWhatNoCommitNamesAfterTwoWeeks) {
    const fs::path older = storeUnnamedObject("older");
    const fs::path younger = storeUnnamedObject("younger");
    makeOlder(older, Days(15));
    makeOlder(younger, Days(13));
    const fs::path named = project / (".qrv/objects/" + Digest::of(partsList(4)));
    makeOlder(named, Days(100));
    EXPECT_THAT(project.run({"gc"}), testing::HasSubstr("Objects dropped: 1 (5 bytes)\n"));
    EXPECT_FALSE(fs::exists(older));
    EXPECT_TRUE(fs::exists(younger));
    EXPECT_TRUE(fs::exists(named));
}

TEST_F(GcCommand, DropsNothingBeforeTheFirstCommit) {
    const HistoryProject fresh;
    fresh.run({"add", "--all"});
    const fs::path object = fresh / (".qrv/objects/" + Digest::of("saved"));
    writeFile(object, "saved");
    makeOlder(object, Days(15));
    fresh.run({"gc"});
    EXPECT_TRUE(fs::exists(object));
}

TEST_F(GcCommand, DropsDrawingVersionsOfAStoreThatRested) {
    project.write({{"plan.dwg", "first plan"}});
    project.commit("plan");
    qrv_test::toOldForms(project.folder);
    qrv_test::oldStoreOf(project.folder.text(), store().stem(), {"lost plan"});
    EXPECT_THAT(project.run({"gc"}), testing::HasSubstr("Drawing versions dropped: 0 (0 bytes)\n"));
    makeOlder(store(), Days(15));
    EXPECT_THAT(project.run({"gc"}), testing::HasSubstr("Drawing versions dropped: 1 (9 bytes)\n"));
    EXPECT_EQ(project.run({"verify"}),
              "Commits: 5\nObjects: 2\nPacked objects: 3\nDrawing versions: 1\n"
              "Everything that was kept is there and whole\n");
}

TEST_F(GcCommand, KeepsForTwoWeeksWhatWasStoredOnceMore) {
    project.write({{"plan.dwg", "first plan"}});
    project.commit("plan");
    const auto loseBoth = [this] {
        project.write({{"parts.csv", "lost list"}, {"plan.dwg", "lost plan"}});
        project.run({"restore", "--force", "parts.csv", "plan.dwg"});
    };
    loseBoth();
    std::vector<fs::path> packs;
    for (const auto& pack : fs::directory_iterator(project / ".qrv/packs"))
        packs.push_back(pack.path());
    for (const fs::path& pack : packs)
        makeOlder(pack, Days(15));
    loseBoth();
    int renewed = 0;
    for (const fs::path& pack : packs)
        renewed += fs::last_write_time(pack) > fs::file_time_type::clock::now() - Days(1) ? 1 : 0;
    // The drawing, the list, and what the drawing builds on.
    EXPECT_GE(renewed, 2);
}

TEST_F(GcCommand, KeepsForTwoWeeksWhatIsPackedAndWasStoredOnceMore) {
    project.run({"gc"});
    // The first version is in the pack only.
    project.write({{"parts.csv", partsList(1)}});
    makeOlder(project / ".qrv/objects.pack", Days(15));
    project.commit("5");
    EXPECT_GT(fs::last_write_time(project / ".qrv/objects.pack"),
              fs::file_time_type::clock::now() - Days(1));
}

TEST_F(GcCommand, RemovesAStoreOfWhichNoCommitNamesAVersion) {
    project.write({{"plan.dwg", "never committed"}});
    project.run({"add", "plan.dwg"});
    fs::create_directories(project / ".qrv/tf");
    const HistoryProject other;
    other.write({{"plan.dwg", "never committed"}});
    other.commit("elsewhere");
    qrv_test::toOldForms(other.folder);
    const fs::path from = fs::directory_iterator(other / ".qrv/tf")->path();
    fs::copy_file(from, project / ".qrv/tf/abandoned.tf");
    makeOlder(store(), Days(15));
    EXPECT_THAT(project.run({"gc"}),
                testing::HasSubstr("Drawing versions dropped: 1 (15 bytes)\n"));
    EXPECT_TRUE(fs::is_empty(project / ".qrv/tf"));
}

TEST_F(GcCommand, RemovesLeftoversAfterADayAlsoBesideTheFiles) {
    project.write({{"plans/a.dxf", "a"}});
    project.commit("plans");
    for (const char* const name :
         {".qrv/.1-1.qrv-tmp", ".qrv/objects/.1-2.qrv-tmp", ".1-3.qrv-tmp", "plans/.1-4.qrv-tmp"}) {
        writeFile(project / name, "half");
        makeOlder(project / name, Days(2));
    }
    writeFile(project / "plans/.1-5.qrv-tmp", "now");
    EXPECT_THAT(project.run({"gc"}), testing::HasSubstr("Leftovers removed: 4 (16 bytes)\n"));
    EXPECT_EQ(qrv_test::listTree(project / "plans"),
              (std::vector<std::string>{".1-5.qrv-tmp", "a.dxf"}));
    EXPECT_FALSE(fs::exists(project / ".1-3.qrv-tmp"));
}

TEST_F(GcCommand, LeavesADamagedObjectWhereItIs) {
    const fs::path object = project / (".qrv/objects/" + Digest::of(partsList(2)));
    fs::remove(object);
    writeFile(object, "something else");
    const Outcome outcome = project.qrv({"gc"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.messages,
              "qrv: The stored version 'po:" + Digest::of(partsList(2)) +
                  "' is damaged: its contents have another digest\n"
                  "qrv: Not all could be collected; problems: 1 (qrv verify tells more)\n");
    EXPECT_EQ(readFile(object), "something else");
    EXPECT_THAT(outcome.output, testing::StartsWith("Objects packed: 2 "));
}

TEST_F(GcCommand, KeepsThePlainFileWhenThePackedOneIsDamaged) {
    project.run({"gc"});
    const fs::path object = project / (".qrv/objects/" + Digest::of(partsList(1)));
    writeFile(object, partsList(1));
    std::string pack = readFile(project / ".qrv/objects.pack");
    pack.at(pack.size() / 2) = static_cast<char>(pack.at(pack.size() / 2) ^ 1);
    writeFile(project / ".qrv/objects.pack", pack);
    EXPECT_EQ(project.qrv({"gc"}).status, 1);
    EXPECT_EQ(readFile(object), partsList(1));
}

TEST_F(GcCommand, ChangesNothingWhenTheHistoryIsDamaged) {
    {
        qrv::Database history(OdString::fromNarrow((project / ".qrv/qrv.db").string()),
                              qrv::Database::Access::readWrite);
        history.execute("UPDATE changes SET path = 'other.csv' WHERE number = 2");
    }
    makeOlder(storeUnnamedObject("nobody's"), Days(15));
    const auto before = plainObjects();
    EXPECT_EQ(project.qrv({"gc"}),
              (Outcome{1, "",
                       "qrv: The history is damaged, so that nobody can say what is still needed; "
                       "nothing was changed (qrv verify tells more)\n"}));
    EXPECT_EQ(plainObjects(), before);
}

}  // namespace
