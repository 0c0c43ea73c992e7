#include <engine/base/Digest.h>
#include <engine/journal/OpenTree.h>
#include <engine/maintenance/Collection.h>
#include <engine/maintenance/PackingPlan.h>
#include <engine/repository/MetadataFiles.h>
#include <engine/worktree/WorkingTree.h>
#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/base/RecordingCaller.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::Digest;
using qrv::PackingPlan;
using qrv::PackItem;
using qrv::WorkingTree;
using qrv_test::HistoryProject;
using testing::IsEmpty;

/// Names contents of one letter by it.
std::string letterOf(const qrv::DigestBytes& digest) {
    for (const char letter : std::string("abcdef")) {
        if (qrv::toDigestBytes(Digest::of(std::string(1, letter))) == digest)
            return {letter};
    }
    return "?";
}

/// "a<b": a comes next, and b is the next version of its file. Without what every project has.
std::string shown(const PackingPlan& plan) {
    std::string text;
    for (const std::uint32_t number : plan.order) {
        const PackItem& item = plan.items[number];
        if (letterOf(item.digest) == "?")
            continue;
        text += letterOf(item.digest);
        if (item.newer != PackItem::none)
            text += "<" + letterOf(plan.items[item.newer].digest);
        text += " ";
    }
    return text;
}

class Planning : public testing::Test {
protected:
    std::unique_ptr<WorkingTree> open() const {
        return std::move(*qrv::openTree(project.folder.path(), qrv::Repository::Use::change,
                                        qrv_test::anyCaller()));
    }
    PackingPlan plan() const {
        const std::unique_ptr<WorkingTree> tree = open();
        qrv::Repository& repository = tree->repository();
        const auto files = qrv::listMetadata(tree->root(), tree->folder());
        const qrv::NamedVersions named =
            qrv::namedVersions(repository.history(), [](const OdString&) { FAIL(); });
        std::vector<OdString> problems;
        const qrv::Holdings holdings = qrv::holdingsOf(repository, *files, named, problems);
        EXPECT_THAT(problems, IsEmpty());
        return qrv::planPacking(holdings, named, repository.history());
    }
    void collect() const {
        const std::unique_ptr<WorkingTree> tree = open();
        EXPECT_TRUE(qrv::collectGarbage(tree->repository(), qrv::CollectionMode::change));
    }
    void commit(const std::map<std::string, std::string>& files) const {
        project.write(files);
        project.commit("next");
    }

    const HistoryProject project;
};

TEST_F(Planning, PutsTheVersionsOfAFileSideBySideTheNewestFirst) {
    commit({{"x", "a"}, {"y", "b"}});
    commit({{"x", "c"}});
    commit({{"x", "d"}, {"y", "e"}});
    EXPECT_EQ(shown(plan()), "d c<d a<c e b<e ");
}

TEST_F(Planning, FollowsARenaming) {
    commit({{"x", "a"}});
    commit({{"x", "b"}});
    fs::rename(project / "x", project / "z");
    commit({});
    commit({{"y", "d"}, {"z", "c"}});
    EXPECT_EQ(shown(plan()), "d c b<c a<b ");
}

TEST_F(Planning, TakesEqualContentsOnce) {
    commit({{"x", "a"}, {"y", "a"}});
    commit({{"x", "b"}});
    commit({{"x", "a"}});
    EXPECT_EQ(shown(plan()), "a b<a ");
}

TEST_F(Planning, PutsFilesOfOneKindSideBySide) {
    commit({{"1.txt", "a"}, {"2.dwg", "b"}, {"3.txt", "c"}, {"4/5.dwg", "d"}, {"6.x/7", "e"}});
    EXPECT_EQ(shown(plan()), "e b d a c ");
}

TEST_F(Planning, LeavesWhatLiesInOrderAlready) {
    commit({{"x", "a"}});
    commit({{"x", "b"}});
    collect();
    EXPECT_EQ(shown(plan()), "");
    commit({{"x", "c"}});
    EXPECT_EQ(shown(plan()), "c ");
}

TEST_F(Planning, PutsManySmallPacksTogether) {
    const std::string letters = "abcdef123456";
    for (const char letter : letters) {
        commit({{"x", std::string(1, letter)}});
        collect();
    }
    const auto packs =
        std::distance(fs::directory_iterator(project / ".qrv/packs"), fs::directory_iterator());
    EXPECT_LT(packs, 10);
    EXPECT_EQ(project.qrv({"verify"}).status, 0);
}

}  // namespace
