#include <cli/terminal/Progress.h>
#include <engine/base/Digest.h>
#include <engine/database/Database.h>
#include <tests/cli/commands/HistoryProject.h>

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <set>
#include <string>

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

/// Four commits of a parts list.
class GcCommand : public testing::Test {
protected:
    GcCommand() {
        for (int version = 1; version <= 4; ++version) {
            project.write({{"parts.csv", partsList(version)}});
            project.commit(std::to_string(version));
        }
    }

    std::set<std::string> filesIn(const std::string& folder) const {
        std::set<std::string> names;
        if (fs::exists(project / folder))
            for (const fs::directory_entry& entry : fs::directory_iterator(project / folder))
                names.insert(entry.path().filename());
        return names;
    }
    std::set<std::string> packs() const { return filesIn(".qrv/packs"); }
    /// Lets all that is stored by now count as stored so long ago.
    void makeStoredOlder(Days age) const {
        for (const char* const folder : {".qrv/packs", ".qrv/objects", ".qrv/tf"})
            for (const std::string& name : filesIn(folder))
                makeOlder(project / folder / name, age);
    }
    std::string ignoreFile() const { return readFile(project / ".qrv/properties/ignore"); }
    /// Of the packs, the objects and the drawing stores.
    std::uintmax_t storedBytes() const {
        std::uintmax_t bytes = 0;
        for (const auto& entry : fs::recursive_directory_iterator(project / ".qrv")) {
            const std::string path = entry.path();
            const bool counts = path.find("/objects") != std::string::npos ||
                                path.find("/packs/") != std::string::npos ||
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

    const HistoryProject project;
    const std::size_t listBytes = partsList(1).size();
};

TEST_F(GcCommand, PutsWhatWasKeptIntoOnePack) {
    const std::string before = stored();
    const Outcome outcome = project.qrv({"gc"});
    const auto bytes = static_cast<std::int64_t>(4 * listBytes + ignoreFile().size());
    EXPECT_EQ(outcome, (Outcome{0,
                                "Objects packed: 5 (" + qrv::cli::sizeText(bytes).toNarrow() +
                                    ")\n"
                                    "Objects dropped: 0 (0 bytes)\n"
                                    "Drawing versions dropped: 0 (0 bytes)\n"
                                    "Leftovers removed: 0 (0 bytes)\n"
                                    "Stored: " +
                                    before + " before, " + stored() + " now\n",
                                ""}));
    EXPECT_EQ(packs().size(), 1U);
    EXPECT_TRUE(filesIn(".qrv/objects").empty());
    expectAllVersions();
}

TEST_F(GcCommand, KeepsOneVersionAndTheDifferencesToTheOthers) {
    project.run({"gc"});
    // Each line has 8 bytes of noise in its 17, so that one list takes nearly half its size.
    EXPECT_LT(storedBytes(), 2 * listBytes);
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
    project.write({{"new.csv", "new"}});
    project.commit("5");
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
    const auto packed = static_cast<std::int64_t>(4 * listBytes + ignoreFile().size());
    EXPECT_EQ(project.qrv({"gc", "--dry-run"}),
              (Outcome{0,
                       "Objects to pack: 5 (" + qrv::cli::sizeText(packed).toNarrow() +
                           ")\n"
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
    EXPECT_THAT(project.run({"gc"}), testing::HasSubstr("Objects dropped: 1 (5 bytes)\n"));
    EXPECT_FALSE(fs::exists(older));
    EXPECT_TRUE(fs::exists(younger));
    expectAllVersions();
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

TEST_F(GcCommand, DropsWhatWasSavedOnceAfterTwoWeeks) {
    project.write({{"plan.dwg", "first plan"}});
    project.commit("plan");
    project.write({{"plan.dwg", "lost plan"}});
    project.run({"restore", "--force", "plan.dwg"});
    const auto dropsNothing =
        testing::AllOf(testing::HasSubstr("Objects dropped: 0 (0 bytes)\n"),
                       testing::HasSubstr("Drawing versions dropped: 0 (0 bytes)\n"));
    EXPECT_THAT(project.run({"gc"}), dropsNothing);
    makeStoredOlder(Days(15));
    EXPECT_THAT(project.run({"gc"}), testing::HasSubstr("dropped: 1 (9 bytes)\n"));
    EXPECT_THAT(project.run({"gc"}), dropsNothing);
    EXPECT_EQ(project.qrv({"verify"}).status, 0);
}

TEST_F(GcCommand, KeepsForTwoWeeksWhatWasStoredOnceMore) {
    project.write({{"plan.dwg", "first plan"}});
    project.commit("plan");
    const auto loseBoth = [this] {
        project.write({{"parts.csv", "lost list"}, {"plan.dwg", "lost plan"}});
        project.run({"restore", "--force", "parts.csv", "plan.dwg"});
    };
    loseBoth();
    makeStoredOlder(Days(15));
    loseBoth();
    EXPECT_THAT(project.run({"gc"}),
                testing::AllOf(testing::HasSubstr("Objects dropped: 0 (0 bytes)\n"),
                               testing::HasSubstr("Drawing versions dropped: 0 (0 bytes)\n")));
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

TEST_F(GcCommand, ChangesNothingWhenTheHistoryIsDamaged) {
    {
        qrv::Database history(OdString::fromNarrow((project / ".qrv/qrv.db").string()),
                              qrv::Database::Access::readWrite);
        history.execute("UPDATE changes SET path = 'other.csv' WHERE number = 2");
    }
    makeOlder(storeUnnamedObject("nobody's"), Days(15));
    const auto before = contentsOf(project / ".qrv");
    EXPECT_EQ(project.qrv({"gc"}),
              (Outcome{1, "",
                       "qrv: The history is damaged, so that nobody can say what is still needed; "
                       "nothing was changed (qrv verify tells more)\n"}));
    EXPECT_EQ(contentsOf(project / ".qrv"), before);
}

}  // namespace
