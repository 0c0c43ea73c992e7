#include <common/repository/ActivityLog.h>
#include <common/repository/PropertyProjectName.h>
#include <common/repository/RootPath.h>
#include <common/state/Cache.h>
#include <common/worktree/CollectFiles.h>
#include <tests/support/Files.h>
#include <tests/support/RecordingIo.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

}  // namespace

TEST(Layout, OfARepositoryThatWasMadeAndUsedIsAsDocumented) {
    const qrv_test::TemporaryFolder folder;
    const qrv_test::RecordingIo io;
    const common::RootPath root = common::RootPath::get(folder.text(), true).value();

    common::Cache::create(root, io);
    ASSERT_TRUE(common::collectRepoFiles([](const OdString&) {}, root));
    ASSERT_TRUE(common::PropertyProjectName(root).setName("Rathaus"));
    ASSERT_TRUE(common::logString(L"made", root));

    EXPECT_EQ(qrv_test::listTree(folder.path()),
              linesOf(qrv_test::readFile(QRV_REPOSITORY_SAMPLES "/layout.sample")));
}
