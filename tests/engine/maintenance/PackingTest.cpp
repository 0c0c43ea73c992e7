#include <engine/base/Digest.h>
#include <engine/journal/OpenTree.h>
#include <engine/maintenance/Packing.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/repository/MetadataFiles.h>
#include <engine/storage/PackFile.h>
#include <engine/worktree/WorkingTree.h>
#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/engine/storage/OldForms.h>

#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::Digest;
using qrv::PackCandidate;
using qrv::WorkingTree;
using qrv_test::HistoryProject;

/// Names contents of one letter by it.
std::string letterOf(const std::string& digest) {
    for (const char letter : std::string("abcdef")) {
        if (Digest::of(std::string(1, letter)) == digest)
            return {letter};
    }
    return "?";
}

OdString urlOf(const std::string& contents) {
    return qrv::objectUrl(OdString::fromNarrow(Digest::of(contents)));
}

/// "b<a": b is packed against a.
std::string shown(const std::vector<PackCandidate>& candidates) {
    std::string text;
    for (const PackCandidate& candidate : candidates)
        text += letterOf(candidate.digest) +
                (candidate.base ? "<" + letterOf(*candidate.base) : "") + " ";
    return text;
}

class Packing : public testing::Test {
protected:
    std::vector<PackCandidate> candidates(const std::set<OdString>& needed = {}) {
        qrv_test::toOldForms(project.folder);
        workingTree = std::move(*qrv::openTree(project.folder.path(), qrv::Repository::Use::change,
                                               qrv_test::anyCaller()));
        const auto files = qrv::listMetadata(workingTree->root(), workingTree->folder());
        std::vector<PackCandidate> all =
            qrv::packCandidates(workingTree->repository(), files->objects, needed);
        std::erase_if(all, [](const auto& candidate) { return letterOf(candidate.digest) == "?"; });
        return all;
    }
    void commit(const std::map<std::string, std::string>& files) const {
        project.write(files);
        project.commit("next");
    }

    const HistoryProject project;
    std::unique_ptr<WorkingTree> workingTree;
};

TEST_F(Packing, TakesTheEarlierVersionOfTheSameFile) {
    commit({{"x", "a"}, {"y", "b"}});
    commit({{"x", "c"}});
    commit({{"x", "d"}, {"y", "e"}});
    EXPECT_EQ(shown(candidates()), "a b c<a d<c e<b ");
}

TEST_F(Packing, FollowsARenamingOfAVersionThatStaysPlain) {
    commit({{"x", "a"}});
    commit({{"x", "b"}});
    fs::rename(project / "x", project / "y");
    commit({});
    commit({{"y", "c"}});
    EXPECT_EQ(shown(candidates({urlOf("b")})), "a c<a ");
}

TEST_F(Packing, SkipsVersionsThatStayPlain) {
    commit({{"x", "a"}});
    commit({{"x", "b"}});
    commit({{"x", "c"}});
    EXPECT_EQ(shown(candidates({urlOf("b")})), "a c<a ");
}

TEST_F(Packing, PacksEqualContentsOnce) {
    commit({{"x", "a"}, {"y", "a"}});
    commit({{"x", "b"}});
    commit({{"x", "a"}});
    EXPECT_EQ(shown(candidates()), "a b<a ");
}

TEST_F(Packing, GoesOnFromWhatIsPacked) {
    commit({{"x", "a"}});
    commit({{"x", "b"}});
    const std::vector<PackCandidate> chosen = candidates();
    std::vector<OdString> problems;
    EXPECT_EQ(shown(qrv::packObjects(workingTree->repository(), chosen, problems)), "a b<a ");
    EXPECT_TRUE(problems.empty());
    EXPECT_FALSE(fs::exists(project / (".qrv/objects/" + Digest::of("a"))));
    workingTree.reset();
    commit({{"x", "c"}});
    EXPECT_EQ(shown(candidates()), "c<b ");
}

}  // namespace
