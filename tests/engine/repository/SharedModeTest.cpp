#include <engine/repository/SharedMode.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <utility>

namespace {

namespace fs = std::filesystem;
using qrv::SharedMode;
using qrv_test::TemporaryFolder;

/// A root, and a person whose mask is 027.
class SharedModeOfARepository : public testing::Test {
protected:
    SharedModeOfARepository() { ::umask(027); }
    ~SharedModeOfARepository() override { ::umask(022); }

    void makeMetadata(unsigned mode) const {
        fs::create_directory(metadata);
        fs::permissions(metadata, fs::perms(mode));
    }
    /// Those of a file that is made now, with all that can be asked for.
    unsigned permissionsNow() const {
        sys::Outcome<sys::NewFile> file = opened.newFile("new", 0666);
        EXPECT_FALSE(file->publish(sys::NewFile::Existing::replace));
        return static_cast<unsigned>(fs::status(folder / "new").permissions());
    }
    unsigned permissionsWhileShared() const {
        const SharedMode shared(opened, caller);
        return permissionsNow();
    }

    const TemporaryFolder folder;
    qrv_test::RecordingCaller caller;
    const fs::path metadata = folder / ".qrv";
    const sys::Folder opened = *sys::Folder::open(folder.path());
};

TEST_F(SharedModeOfARepository, GivesNewFilesThePermissionsOfItsFolder) {
    for (const auto& [ofFolder, ofFile] :
         {std::pair(02775U, 0664U), {02770U, 0660U}, {0777U, 0666U}, {0771U, 0660U}}) {
        makeMetadata(ofFolder);
        EXPECT_EQ(permissionsWhileShared(), ofFile);
        EXPECT_EQ(permissionsNow(), 0640U);
        fs::remove(metadata);
    }
}

TEST_F(SharedModeOfARepository, LeavesTheMaskAloneWhereTheGroupMayNotWrite) {
    EXPECT_EQ(permissionsWhileShared(), 0640U);
    for (const unsigned mode : {0700U, 0755U, 02750U, 0757U}) {
        makeMetadata(mode);
        EXPECT_EQ(permissionsWhileShared(), 0640U) << mode;
        fs::remove(metadata);
    }
}

TEST_F(SharedModeOfARepository, IsHeldByTheOneThatItWasMovedTo) {
    makeMetadata(02775);
    {
        SharedMode first(opened, caller);
        const SharedMode second(std::move(first));
        EXPECT_EQ(permissionsNow(), 0664U);
        const SharedMode within(opened, caller);
        EXPECT_EQ(permissionsNow(), 0664U);
    }
    EXPECT_EQ(permissionsNow(), 0640U);
}

TEST_F(SharedModeOfARepository, FollowsTheWishOfTheCaller) {
    makeMetadata(02775);
    caller.followsShared = false;
    EXPECT_EQ(permissionsWhileShared(), 0640U);
}

}  // namespace
