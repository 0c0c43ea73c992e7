#include <cli/shell/PersonAtTerminal.h>
#include <sys/User.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <stdlib.h>

#include <string>

namespace {

using qrv::cli::PersonAtTerminal;
using qrv_test::writeFile;
using testing::ElementsAre;
using testing::HasSubstr;

class Person : public testing::Test {
protected:
    Person() { ::setenv("QRV_CONFIG_DIR", configuration.path().c_str(), 1); }
    ~Person() override {
        ::unsetenv("QRV_CONFIG_DIR");
        ::unsetenv("SUDO_UID");
    }

    const qrv_test::TemporaryFolder configuration;
    PersonAtTerminal person;
};

TEST_F(Person, WantsSharedFoldersFollowedUnlessTheSettingSaysNo) {
    EXPECT_TRUE(person.followsSharedFolders());
    writeFile(configuration / "settings.json", R"({"shared-folders": 0})");
    EXPECT_FALSE(person.followsSharedFolders());
    writeFile(configuration / "settings.json", "damaged");
    EXPECT_TRUE(person.followsSharedFolders());
}

TEST_F(Person, TrustsTheFoldersInTheSettings) {
    writeFile(configuration / "settings.json", R"({"trusted": ["/share/plans"]})");
    EXPECT_THAT(*person.trustedFolders(), ElementsAre(OdString(L"/share/plans")));
    writeFile(configuration / "settings.json", "damaged");
    EXPECT_THAT(person.trustedFolders().error().message.toNarrow(), HasSubstr("settings.json"));
}

TEST_F(Person, IsWhoeverCalledSudo) {
    ::setenv("SUDO_UID", "4711", 1);
    EXPECT_EQ(person.isPerson(4711), sys::effectiveUser() == 0);
    EXPECT_FALSE(person.isPerson(4712));
    ::setenv("SUDO_UID", "x", 1);
    EXPECT_FALSE(person.isPerson(0));
    ::unsetenv("SUDO_UID");
    EXPECT_FALSE(person.isPerson(0));
}

TEST_F(Person, NamesTheCommandThatWasTyped) {
    EXPECT_EQ(person.action(), "");
    person.setCommand("commit");
    EXPECT_EQ(person.action(), "commit");
}

TEST_F(Person, ReadsNotesAsLinesOfTheProgram) {
    testing::internal::CaptureStderr();
    person.note(L"Note: two\nlines");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "qrv: Note: two; lines\n");
}

}  // namespace
