#include <common/worktree/VisitRepoFiles.h>
#include <tests/common/worktree/TemporaryRepository.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

class VisitRepoFiles : public testing::Test {
protected:
    void addFiles(const std::vector<std::string>& names) const {
        for (const std::string& name : names) {
            std::filesystem::create_directories((repository.folder / name).parent_path());
            qrv_test::writeFile(repository.folder / name, name);
        }
    }

    static std::function<void(OdString)> fail() {
        return [](const OdString& path) { ADD_FAILURE() << path.toNarrow(); };
    }
    std::function<void(OdString)> visit() {
        return [this](const OdString& path) { visited.push_back(path.toNarrow()); };
    }

    qrv_test::TemporaryRepository repository;
    std::vector<std::string> visited;
};

}  // namespace

TEST_F(VisitRepoFiles, AsksForEachNameWhenTheCallerJudges) {
    addFiles({"a.dwg", "a.bak", "plans/c.dwg", "out/d.dwg", "plans/.qrv/e"});
    repository.writeRules("*.dwg\n^[\n");
    std::vector<std::string> asked;
    const auto isExcluded = [&asked](const OdString& name) {
        asked.push_back(name.toNarrow());
        return name == L"out";
    };
    ASSERT_TRUE(common::visitRepoFiles(repository.root, isExcluded, visit(), fail()));
    EXPECT_THAT(visited, ElementsAre("a.bak", "a.dwg", "plans/c.dwg", ".qrv/properties/ignore"));
    EXPECT_THAT(asked, ElementsAre("a.bak", "a.dwg", "plans", "out", "c.dwg", "ignore"));
}

TEST_F(VisitRepoFiles, MakesNoIgnoreFileWhenTheCallerJudges) {
    addFiles({"a.dwg"});
    const auto keepAll = [](const OdString&) { return false; };
    const auto pass = [](const OdString&) {};
    ASSERT_TRUE(common::visitRepoFiles(repository.root, keepAll, visit(), pass));
    EXPECT_THAT(visited, ElementsAre("a.dwg"));
    EXPECT_THAT(qrv_test::listTree(repository.folder.path()), ElementsAre(".qrv/", "a.dwg"));
}

TEST_F(VisitRepoFiles, TellsWhatCouldNotBeListedWhenTheCallerJudges) {
    addFiles({"a.dwg"});
    std::vector<std::string> unread;
    const auto note = [&unread](const OdString& path) { unread.push_back(path.toNarrow()); };
    const auto keepAll = [](const OdString&) { return false; };
    ASSERT_TRUE(common::visitRepoFiles(repository.root, keepAll, visit(), note));
    EXPECT_THAT(unread, ElementsAre(".qrv/properties"));
}
