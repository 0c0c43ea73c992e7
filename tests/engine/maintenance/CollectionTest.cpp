#include <engine/base/Digest.h>
#include <engine/maintenance/Collection.h>
#include <tests/engine/storage/OldForms.h>
#include <tests/engine/worktree/Working.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::Amount;
using qrv::Collected;
using qrv::CollectionMode;
using qrv::Digest;
using qrv_test::writeFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Days = std::chrono::duration<int, std::ratio<86400>>;

/// Two commits of a text and of a drawing, kept as earlier programs kept them.
class Collection : public testing::Test {
protected:
    Collection() {
        for (const char* const version : {"first", "second"}) {
            project.write({{"a.txt", version}, {"plan.dwg", version}});
            project.commit(version);
        }
        qrv_test::toOldForms(project.folder);
    }

    Collected collect(CollectionMode mode = CollectionMode::change) const {
        return qrv::collectGarbage(project.open()->repository(), mode).value();
    }
    std::string object(const std::string& contents) const {
        return (project / (".qrv/objects/" + Digest::of(contents))).string();
    }
    /// Contents that no commit names.
    std::string unnamedObject(const std::string& contents, Days age) const {
        writeFile(object(contents), contents);
        return aged(object(contents), age);
    }
    static std::string aged(const fs::path& file, Days age) {
        fs::last_write_time(file, fs::file_time_type::clock::now() - age);
        return file.string();
    }
    fs::path onlyStore() const { return fs::directory_iterator(project / ".qrv/tf")->path(); }
    void expectWhole() const { EXPECT_EQ(project.qrv({"verify"}).status, 0); }

    qrv_test::Working project;
};

TEST_F(Collection, PacksWhatOnlyOldCommitsName) {
    const Collected collected = collect();

    EXPECT_EQ(collected.packed, (Amount{1, 5}));
    EXPECT_FALSE(fs::exists(object("first")));
    EXPECT_TRUE(fs::exists(object("second")));
    EXPECT_TRUE(fs::exists(project / ".qrv/objects.pack"));
    expectWhole();
}

TEST_F(Collection, LeavesTheTipOfEveryBranchPlain) {
    project.run({"branch", "old", "1"});
    EXPECT_EQ(collect().packed, Amount());
    EXPECT_TRUE(fs::exists(object("first")));
}

TEST_F(Collection, DropsAnUnnamedObjectAfterTwoWeeks) {
    const std::string old = unnamedObject("long ago", Days(15));
    const std::string young = unnamedObject("just now", Days(13));

    EXPECT_EQ(collect().droppedObjects, (Amount{1, 8}));

    EXPECT_FALSE(fs::exists(old));
    EXPECT_TRUE(fs::exists(young));
}

TEST_F(Collection, KeepsNamedObjectsHoweverOldTheyAre) {
    for (const char* const contents : {"first", "second"})
        aged(object(contents), Days(1000));
    EXPECT_EQ(collect().droppedObjects, Amount());
    expectWhole();
}

TEST_F(Collection, DropsAPackedObjectThatNobodyNamesAnyMore) {
    project.run({"switch", "-c", "side"});
    project.write({{"a.txt", "on the side"}});
    project.commit("Side");
    project.write({{"a.txt", "further on"}});
    project.commit("Further");
    qrv_test::toOldForms(project.folder);
    EXPECT_EQ(collect().packed.count, 2);
    aged(project / ".qrv/objects.pack", Days(15));

    EXPECT_EQ(collect().droppedObjects, Amount());
    expectWhole();
}

TEST_F(Collection, DropsAWholeStoreThatNoCommitNames) {
    const fs::path store = onlyStore();
    const fs::path unnamed = store.parent_path() / "left.tf";
    fs::copy_file(store, unnamed);
    aged(unnamed, Days(15));
    aged(store, Days(15));

    EXPECT_EQ(collect().droppedDrawingVersions, (Amount{2, 11}));

    EXPECT_FALSE(fs::exists(unnamed));
    EXPECT_TRUE(fs::exists(store));
    expectWhole();
}

TEST_F(Collection, DropsSingleRevisionsOfAStoreThatIsNeeded) {
    qrv_test::oldStoreOf(project.folder.text(), onlyStore().stem(), {"third"});
    EXPECT_EQ(collect().droppedDrawingVersions, Amount());
    aged(onlyStore(), Days(15));

    EXPECT_EQ(collect().droppedDrawingVersions, (Amount{1, 5}));
    expectWhole();
}

TEST_F(Collection, RemovesLeftoversAfterADay) {
    const std::string here = ".a.txt.1.qrv-tmp";
    const std::string inside = ".qrv/objects/.object.1.qrv-tmp";
    const std::string young = ".b.txt.1.qrv-tmp";
    for (const std::string& file : {here, inside, young})
        writeFile(project / file, "half");
    for (const std::string& file : {here, inside})
        aged(project / file, Days(2));

    EXPECT_EQ(collect().leftovers, (Amount{2, 8}));

    EXPECT_FALSE(fs::exists(project / here));
    EXPECT_FALSE(fs::exists(project / inside));
    EXPECT_TRUE(fs::exists(project / young));
}

TEST_F(Collection, OnlyCountsWhenItOnlyLooks) {
    const std::string unnamed = unnamedObject("long ago", Days(15));
    const Collected looked = collect(CollectionMode::look);
    EXPECT_EQ(looked.sizeAfter, looked.sizeBefore);
    EXPECT_TRUE(fs::exists(unnamed));
    EXPECT_TRUE(fs::exists(object("first")));

    const Collected done = collect();

    EXPECT_EQ(looked.packed, done.packed);
    EXPECT_EQ(looked.droppedObjects, done.droppedObjects);
    EXPECT_EQ(looked.sizeBefore, done.sizeBefore);
    EXPECT_THAT(done.problems, IsEmpty());
}

TEST_F(Collection, ForgetsNothingBeforeTheFirstCommit) {
    const qrv_test::Working fresh;
    fresh.open();
    const fs::path object = fresh / (".qrv/objects/" + Digest::of("stored"));
    writeFile(object, "stored");
    aged(object, Days(1000));
    const Collected collected =
        qrv::collectGarbage(fresh.open()->repository(), CollectionMode::change).value();
    EXPECT_EQ(collected.droppedObjects, Amount());
    EXPECT_TRUE(fs::exists(object));
}

TEST_F(Collection, LeavesADamagedObjectPlainAndTellsOfIt) {
    fs::permissions(object("first"), fs::perms(0644));
    writeFile(object("first"), "fIrst");

    const Collected collected = collect();

    EXPECT_EQ(collected.packed, Amount());
    ASSERT_EQ(collected.problems.size(), 1U);
    EXPECT_THAT(collected.problems.front().toNarrow(), HasSubstr("is damaged"));
    EXPECT_TRUE(fs::exists(object("first")));
}

}  // namespace
