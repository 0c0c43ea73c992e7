#include <engine/operations/Init.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using qrv::initialise;
using qrv::Initialised;
using qrv_test::listTree;
using qrv_test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(Init, MakesAFolderARepositoryAndSaysWhatItMade) {
    const TemporaryFolder folder;
    qrv_test::RecordingCaller caller;
    const Expected<Initialised> made =
        initialise(folder / "house", {.name = L"House 12", .addDraftingRules = true}, caller);
    ASSERT_TRUE(made) << made.error().message.toNarrow();
    EXPECT_TRUE(made->root.isNew());
    EXPECT_EQ(made->root.path(), folder.text("house"));
    EXPECT_EQ(made->name, OdString(L"House 12"));
    EXPECT_GT(made->addedRules, 0);
    EXPECT_EQ(made->outerRepository, std::nullopt);
    EXPECT_THAT(caller.notes, IsEmpty());
    EXPECT_THAT(listTree(folder.path()),
                ElementsAre("house/", "house/.qrv/", "house/.qrv/properties/",
                            "house/.qrv/properties/ignore", "house/.qrv/properties/project_name",
                            "house/.qrv/qrv.state"));
}

TEST(Init, CompletesWhatIsThereAndNamesTheRepositoryAboveANewOne) {
    const TemporaryFolder folder;
    ASSERT_TRUE(initialise(folder.path(), {}, qrv_test::anyCaller()));
    fs::remove(folder / ".qrv/qrv.state");
    qrv_test::RecordingCaller caller;
    const Expected<Initialised> again = initialise(folder.path(), {}, caller);
    ASSERT_TRUE(again);
    EXPECT_FALSE(again->root.isNew());
    EXPECT_THAT(caller.notes,
                ElementsAre("Note: there was no state file; a new one names the branch 'master'"));
    const Expected<Initialised> inner = initialise(folder / "inner", {}, caller);
    ASSERT_TRUE(inner);
    EXPECT_EQ(inner->outerRepository, folder.text());
    EXPECT_EQ(inner->name, OdString(L"inner"));
}

TEST(Init, RefusesWhatIsNoFolderAndANameOfTwoLines) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    EXPECT_EQ(initialise(folder / "file", {}, qrv_test::anyCaller()).error().message,
              L"'" + folder.text("file") + L"' is not a folder");
    EXPECT_EQ(initialise(folder / "new", {.name = L"a\nb"}, qrv_test::anyCaller()).error().message,
              OdString(L"A project's name must be one line of plain text"));
    EXPECT_THAT(listTree(folder.path()), ElementsAre("file"));
}

}  // namespace
