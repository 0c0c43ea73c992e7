#include <platform/ut/ScopedFault.h>
#include <tests/common/worktree/RepoIgnoreFixture.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <type_traits>
#include <utility>

namespace {

namespace fs = std::filesystem;

using common::RepoIgnore;
using qrv_test::listTree;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::is_copy_assignable_v<RepoIgnore> && std::is_move_assignable_v<RepoIgnore>);

std::string sample() {
    return qrv_test::readFile(fs::path(QRV_SAMPLES) / "ignore.sample");
}

class RepoIgnoreTest : public qrv_test::RepoIgnoreFixture {};

}  // namespace

TEST_F(RepoIgnoreTest, MakesAMissingFileWithExplanationAndDefaults) {
    EXPECT_EQ(load().size(), 3U);
    EXPECT_EQ(ignoreFile(), sample());
    EXPECT_THAT(messages, IsEmpty());
    EXPECT_THAT(listTree(repository.folder.path()),
                ElementsAre(".qrv/", ".qrv/properties/", ".qrv/properties/ignore"));
}

// A link to nothing meant no rules, and none of the defaults were made: it counted as a file.
TEST_F(RepoIgnoreTest, MakesTheFileInPlaceOfALinkToNothing) {
    fs::create_directories(repository.folder / ".qrv/properties");
    fs::create_symlink("nowhere", repository.folder / ".qrv/properties/ignore");
    EXPECT_EQ(load().size(), 3U);
    EXPECT_EQ(ignoreFile(), sample());
}

// Rules were lost when the disk failed for a moment: what could not be asked counted as missing.
TEST_F(RepoIgnoreTest, AreNotWrittenOverWhatNobodyCouldAsk) {
    qrv_test::writeFile(repository.folder / ".qrv/properties/ignore", "*.old\n");
    for (int nth = 1;; ++nth) {
        const ut::ScopedFault fault(nth, EIO);
        static_cast<void>(common::RepoIgnore::write(L"*.new", repository.root));
        EXPECT_EQ(ignoreFile(), "*.old\n") << nth;
        if (!fault.hasFired())
            break;
    }
}

TEST_F(RepoIgnoreTest, HasNoRulesAndStaysSilentWhenTheFileCannotBeMade) {
    qrv_test::writeFile(repository.folder / ".qrv/properties", "a file in the way");
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_THAT(messages, IsEmpty());
    EXPECT_THAT(listTree(repository.folder.path()), ElementsAre(".qrv/", ".qrv/properties"));
}

TEST_F(RepoIgnoreTest, DoesNotBringBackAMetadataFolderThatIsGone) {
    fs::remove_all(repository.folder / ".qrv");
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_THAT(messages, IsEmpty());
    EXPECT_THAT(listTree(repository.folder.path()), IsEmpty());
}

TEST_F(RepoIgnoreTest, HasNoRulesWhenTheFileCannotBeRead) {
    fs::create_directories(repository.folder / ".qrv/properties/ignore");
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_THAT(messages, IsEmpty());
}

TEST_F(RepoIgnoreTest, LeavesNoFileOrAWholeOneWhenACallFails) {
    int failures = 0;
    for (int call = 1;; ++call) {
        fs::remove_all(repository.folder / ".qrv/properties");
        bool hasFired = false;
        std::size_t ruleCount = 0;
        {
            const ut::ScopedFault fault(call, ENOSPC);
            ruleCount = load().size();
            hasFired = fault.hasFired();
        }
        EXPECT_THAT(messages, IsEmpty()) << call;
        EXPECT_THAT(ruleCount, testing::AnyOf(0U, 3U)) << call;
        failures += ruleCount == 0 ? 1 : 0;
        if (fs::exists(repository.folder / ".qrv/properties/ignore")) {
            EXPECT_EQ(ignoreFile(), sample()) << call;
        }
        for (const std::string& path : listTree(repository.folder.path()))
            EXPECT_THAT(path,
                        testing::AnyOf(".qrv/", ".qrv/properties/", ".qrv/properties/ignore"));
        if (!hasFired)
            break;
    }
    EXPECT_GT(failures, 0);
}

TEST_F(RepoIgnoreTest, NeedsACallbackOnlyWhenThereIsSomethingToTell) {
    repository.writeRules("*.a\n");
    EXPECT_EQ(RepoIgnore(nullptr, repository.root).expressions().size(), 1U);
    repository.writeRules("*.a\n^[\n");
    EXPECT_THROW(RepoIgnore(nullptr, repository.root), std::bad_function_call);
}

TEST_F(RepoIgnoreTest, ReleasesTheCallbackWhenItIsDone) {
    const auto owned = std::make_shared<int>(0);
    const RepoIgnore ignore([owned](const OdString&) {}, repository.root);
    EXPECT_EQ(owned.use_count(), 1);
}

TEST_F(RepoIgnoreTest, ReadsTheRulesOnceOnly) {
    repository.writeRules("*.a\n");
    const RepoIgnore ignore(nullptr, repository.root);
    repository.writeRules("*.b\n*.c\n");
    EXPECT_EQ(ignore.expressions().size(), 1U);
    EXPECT_EQ(load().size(), 2U);
}

TEST_F(RepoIgnoreTest, IsAValue) {
    repository.writeRules("*.a\n");
    RepoIgnore ignore(nullptr, repository.root);
    const RepoIgnore copy = ignore;
    const RepoIgnore moved = std::move(ignore);
    EXPECT_TRUE(std::regex_match("x.a", copy.expressions().at(0)));
    EXPECT_TRUE(std::regex_match("x.a", moved.expressions().at(0)));
}

TEST_F(RepoIgnoreTest, ExplainsItselfPlainAndAsComments) {
    const std::string comments = sample().substr(0, sample().find("*.bak"));
    EXPECT_EQ(RepoIgnore::explanation(false).toNarrow(), comments);
    EXPECT_EQ(RepoIgnore::explanation(true).toNarrow(),
              std::regex_replace(comments.substr(1), std::regex("\n#"), "\n"));
    EXPECT_EQ(RepoIgnore::defaultIgnore(), L"*.bak\n*.dwl\n*.dwl2\n");
}

TEST_F(RepoIgnoreTest, WritesTheContentAsItIsAndMakesThePropertiesFolder) {
    EXPECT_TRUE(RepoIgnore::write(L"a\n\n b", repository.root));
    EXPECT_EQ(ignoreFile(), "a\n\n b");
}

TEST_F(RepoIgnoreTest, NeverOverwritesAnExistingFile) {
    repository.writeRules("mine");
    EXPECT_TRUE(RepoIgnore::write(L"other", repository.root));
    EXPECT_EQ(ignoreFile(), "mine");
    repository.writeRules("");
    EXPECT_TRUE(RepoIgnore::write(L"other", repository.root));
    EXPECT_EQ(ignoreFile(), "");
}

TEST_F(RepoIgnoreTest, SaysThatTheFileCannotBeWritten) {
    qrv_test::writeFile(repository.folder / ".qrv/properties", "a file in the way");
    const Expected<void> written = RepoIgnore::write(L"a", repository.root);
    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().message, L"Failed to write Ignore file.");
    EXPECT_EQ(written.error().code, 0);
}
