#include <engine/repository/SharedMode.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <utility>

namespace {

namespace fs = std::filesystem;
using qrv_cli::SharedMode;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

/// A root, and a person whose mask is 027.
class SharedModeOfARepository : public testing::Test {
protected:
    SharedModeOfARepository() {
        ::setenv("QRV_CONFIG_DIR", configuration.path().c_str(), 1);
        ::umask(027);
    }
    ~SharedModeOfARepository() override {
        ::umask(022);
        ::unsetenv("QRV_CONFIG_DIR");
    }

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
        const SharedMode shared(opened);
        return permissionsNow();
    }

    const TemporaryFolder folder;
    const TemporaryFolder configuration;
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
        SharedMode first(opened);
        const SharedMode second(std::move(first));
        EXPECT_EQ(permissionsNow(), 0664U);
        const SharedMode within(opened);
        EXPECT_EQ(permissionsNow(), 0664U);
    }
    EXPECT_EQ(permissionsNow(), 0640U);
}

TEST_F(SharedModeOfARepository, FollowsTheSetting) {
    makeMetadata(02775);
    writeFile(configuration / "settings.json", R"({"shared-folders": 0})");
    EXPECT_EQ(permissionsWhileShared(), 0640U);
    writeFile(configuration / "settings.json", "damaged");
    EXPECT_EQ(permissionsWhileShared(), 0664U);
}

}  // namespace
