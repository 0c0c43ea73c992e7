#include <common/repository/ActivityLog.h>
#include <platform/kernel/Clock.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <stdlib.h>
#include <time.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;

/// Half past noon of universal time is 14:30 in this zone.
class ActivityLog : public testing::Test {
protected:
    ActivityLog() {
        setenv("TZ", "TEST-2", 1);
        tzset();
    }
    ~ActivityLog() override {
        unsetenv("TZ");
        tzset();
    }

    std::string log() const { return qrv_test::readFile(folder / ".qrv/qrv.log"); }

    qrv_test::TemporaryFolder folder;
    common::RootPath root = common::RootPath::get(folder.text(), true).value();
    kernel::ScopedClock clock{1709642200000};  // 2024-03-05T12:36:40Z
};

}  // namespace

TEST_F(ActivityLog, WritesTheLocalTimeAndTheMessage) {
    EXPECT_TRUE(common::logString(L"scan done", root));
    EXPECT_EQ(log(), "Tue Mar  5 14:36:40 2024 - scan done\n");
}

TEST_F(ActivityLog, IsAsDocumented) {
    EXPECT_TRUE(common::logString(L"sent commit 12", root));
    EXPECT_EQ(log(), qrv_test::readFile(QRV_REPOSITORY_SAMPLES "/log.sample"));
}

TEST_F(ActivityLog, AppendsToWhatIsThere) {
    qrv_test::writeFile(folder / ".qrv/qrv.log", "kept as it is\r\nwithout an end");
    EXPECT_TRUE(common::logString(L"one", root));
    const kernel::ScopedClock later(1709642201000);
    EXPECT_TRUE(common::logString(L"two", root));
    EXPECT_EQ(log(),
              "kept as it is\r\nwithout an end"
              "Tue Mar  5 14:36:40 2024 - one\n"
              "Tue Mar  5 14:36:41 2024 - two\n");
}

TEST_F(ActivityLog, WritesALineForAnEmptyMessage) {
    EXPECT_TRUE(common::logString(L"", root));
    EXPECT_EQ(log(), "Tue Mar  5 14:36:40 2024 - \n");
}

TEST_F(ActivityLog, WritesTheMessageAsUtf8AndKeepsItsBytes) {
    const std::string message = "Grundri\xC3\x9F \xF0\x9F\x93\x90 \xFF.dwg\nsecond\rline";
    EXPECT_TRUE(common::logString(OdString::fromNarrow(message), root));
    EXPECT_EQ(log(), "Tue Mar  5 14:36:40 2024 - " + message + "\n");
}

TEST_F(ActivityLog, FailsAndMakesNothingWithoutTheMetadataFolder) {
    fs::remove_all(folder / ".qrv");
    EXPECT_FALSE(common::logString(L"lost", root));
    EXPECT_THAT(qrv_test::listTree(folder.path()), testing::IsEmpty());
}

TEST_F(ActivityLog, FailsWhenAFolderStandsInItsPlace) {
    fs::create_directory(folder / ".qrv/qrv.log");
    EXPECT_FALSE(common::logString(L"lost", root));
}

TEST_F(ActivityLog, ReachesAFolderWhoseNameIsNotUtf8) {
    const OdString path = folder.text("caf\xE9");
    const common::RootPath other = common::RootPath::get(path, true).value();
    EXPECT_TRUE(common::logString(L"here", other));
    EXPECT_EQ(qrv_test::readFile(folder / "caf\xE9/.qrv/qrv.log"),
              "Tue Mar  5 14:36:40 2024 - here\n");
}
