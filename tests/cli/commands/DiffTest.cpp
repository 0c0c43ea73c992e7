#include <tests/cli/commands/HistoryProject.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using qrv_test::contentsOf;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

/// What lies in the folder, without the metadata folder and without folders.
std::map<std::string, std::string> filesIn(const fs::path& folder) {
    std::map<std::string, std::string> files = contentsOf(folder);
    std::erase_if(files, [](const auto& entry) {
        return entry.first.starts_with(".qrv") || entry.first.ends_with('/');
    });
    return files;
}

TEST(DiffCommand, ComparesTheWorkingFilesWithTheLastCommit) {
    const HistoryProject project;
    project.write({{"a.txt", "one\ntwo\nthree\n"}, {"b.bin", "\0\1"s}, {"c", "c\n"}, {"d", "d"}});
    project.commit("One");
    project.write({{"a.txt", "one\n2\nthree\n"}, {"b.bin", "\0\1\2"s}, {"n", "new"}});
    fs::remove(project / "c");
    fs::rename(project / "d", project / "e");
    EXPECT_EQ(project.qrv({"diff"}), (Outcome{0,
                                              "  modified  a.txt\n"
                                              "diff --git a/a.txt b/a.txt\n"
                                              "--- a/a.txt\n"
                                              "+++ b/a.txt\n"
                                              "@@ -1,3 +1,3 @@\n"
                                              " one\n"
                                              "-two\n"
                                              "+2\n"
                                              " three\n"
                                              "  modified  b.bin\n"
                                              "Binary files a/b.bin and b/b.bin differ (2 and 3 "
                                              "bytes)\n"
                                              "  removed   c\n"
                                              "diff --git a/c b/c\n"
                                              "deleted file mode 100644\n"
                                              "--- a/c\n"
                                              "+++ /dev/null\n"
                                              "@@ -1 +0,0 @@\n"
                                              "-c\n"
                                              "  renamed   d -> e\n"
                                              "diff --git a/d b/e\n"
                                              "rename from d\n"
                                              "rename to e\n"
                                              "  added     n\n"
                                              "diff --git a/n b/n\n"
                                              "new file mode 100644\n"
                                              "--- /dev/null\n"
                                              "+++ b/n\n"
                                              "@@ -0,0 +1 @@\n"
                                              "+new\n"
                                              "\\ No newline at end of file\n",
                                              ""}));
}

TEST(DiffCommand, PrintsNothingWhenNothingDiffers) {
    const HistoryProject project;
    project.write({{"a", "a"}});
    project.commit("One");
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"diff"},
                                                      {"diff", "1"},
                                                      {"diff", "1", "HEAD"},
                                                      {"diff", "--names"}})
        EXPECT_EQ(project.qrv(arguments), (Outcome{0, "", ""}));
    EXPECT_EQ(project.qrv({"diff", "--json"}), (Outcome{0, "[\n]\n", ""}));
}

TEST(DiffCommand, ComparesCommits) {
    const HistoryProject project;
    project.write({{"a", "1\n"}});
    project.commit("One");
    project.write({{"a", "2\n"}});
    project.commit("Two");
    project.write({{"a", "3\n"}});
    const auto expected = [](const std::string& before, const std::string& after) {
        return Outcome{0,
                       "  modified  a\ndiff --git a/a b/a\n--- a/a\n+++ b/a\n@@ -1 +1 @@\n-" +
                           before + "\n+" + after + "\n",
                       ""};
    };
    EXPECT_EQ(project.qrv({"diff"}), expected("2", "3"));
    EXPECT_EQ(project.qrv({"diff", "1"}), expected("1", "3"));
    EXPECT_EQ(project.qrv({"diff", "1", "2"}), expected("1", "2"));
    EXPECT_EQ(project.qrv({"diff", "HEAD", "1"}), expected("2", "1"));
}

TEST(DiffCommand, ComparesWithNothingBeforeTheFirstCommit) {
    const HistoryProject project;
    project.write({{"a", "1\n"}});
    EXPECT_EQ(project.qrv({"diff", "--names"}), (Outcome{0, ".qrv/properties/ignore\na\n", ""}));
    EXPECT_EQ(project.qrv({"diff", "--path", "a"}),
              (Outcome{0,
                       "  added     a\ndiff --git a/a b/a\nnew file mode 100644\n--- /dev/null\n"
                       "+++ b/a\n@@ -0,0 +1 @@\n+1\n",
                       ""}));
}

TEST(DiffCommand, IsLimitedToPaths) {
    const HistoryProject project;
    project.write({{"plans/a", "1"}, {"plans2", "2"}, {"old", "3"}, {"same", "4"}});
    project.commit("One");
    project.write({{"plans/a", "x"}, {"plans/b", "y"}, {"plans2", "z"}});
    fs::rename(project / "old", project / "new");
    const auto names = [&project](std::vector<std::string> paths) {
        paths.insert(paths.begin(), {"diff", "--names", "--path"});
        return project.qrv(std::move(paths));
    };
    EXPECT_EQ(names({"plans"}), (Outcome{0, "plans/a\nplans/b\n", ""}));
    EXPECT_EQ(names({"plans/b", "plans2"}), (Outcome{0, "plans/b\nplans2\n", ""}));
    EXPECT_EQ(names({"old"}), (Outcome{0, "new\n", ""}));
    EXPECT_EQ(names({"same"}), (Outcome{0, "", ""}));
    EXPECT_EQ(names({"."}), (Outcome{0, "new\nplans/a\nplans/b\nplans2\n", ""}));
    EXPECT_EQ(names({"missing"}),
              (Outcome{1, "", "qrv: 'missing' is on neither side of the comparison\n"}));
    EXPECT_EQ(runQrv(project / "plans", {"diff", "--names", "--path", "b"}),
              (Outcome{0, "plans/b\n", ""}));
}

TEST(DiffCommand, EndsNamesWithANulWhenAsked) {
    const HistoryProject project;
    project.write({{"a\nb", "1"}, {"\xFF", "2"}});
    EXPECT_EQ(project.qrv({"diff", "--names", "-0"}),
              (Outcome{0, ".qrv/properties/ignore\0a\nb\0\xFF\0"s, ""}));
}

TEST(DiffCommand, RefusesOptionsThatDoNotGoTogether) {
    const HistoryProject project;
    EXPECT_EQ(project.qrv({"diff", "-0"}).status, 2);
    EXPECT_EQ(project.qrv({"diff", "--names", "--json"}).status, 2);
    EXPECT_EQ(project.qrv({"diff", "1", "2", "3"}).status, 2);
}

TEST(DiffCommand, PrintsJson) {
    const HistoryProject project;
    project.write({{"a", "1"}});
    project.commit("One");
    fs::rename(project / "a", project / "b");
    const std::string digest = "6b86b273ff34fce19d6b804eff5a3f5747ada4eaa22f1d49c01e52ddb7875b4b";
    EXPECT_EQ(project.qrv({"diff", "--json"}), (Outcome{0,
                                                        R"([
    {
        "change" : "renamed",
        "digestAfter" : ")" + digest + R"(",
        "digestBefore" : ")" + digest + R"(",
        "path" : "b",
        "previousPath" : "a",
        "sizeAfter" : 1,
        "sizeBefore" : 1
    }
]
)",
                                                        ""}));
}

TEST(DiffCommand, FailsForWhatIsNoCommit) {
    const HistoryProject project;
    project.write({{"a", "1"}});
    project.commit("One");
    EXPECT_EQ(project.qrv({"diff", "7"}),
              (Outcome{1, "", "qrv: There is no commit, branch or tag '7'\n"}));
    EXPECT_EQ(project.qrv({"diff", "1", "x"}),
              (Outcome{1, "", "qrv: There is no commit, branch or tag 'x'\n"}));
}

/// A working tree before and after changes of every kind.
class DiffAsPatch : public testing::Test {
protected:
    DiffAsPatch() {
        std::string numbers;
        for (int number = 1; number <= 300; ++number)
            numbers += std::to_string(number) + '\n';
        project.write({{"long", numbers},
                       {"crlf.txt", "one\r\ntwo\r\n"},
                       {"no end", "a\nb"},
                       {"gets end", "a\nb"},
                       {"gone", "gone\n"},
                       {"sub/with blank", "moved\n"},
                       {"ü \"\t\x01", "odd\n"},
                       {"--- a", "--- a\n+++ b\n@@ -1 +1 @@\n"}});
        project.commit("Before");
        before = filesIn(project.folder.path());
        numbers.replace(numbers.find("\n150\n"), 5, "\nhundred and fifty\n");
        project.write({{"long", "0\n" + numbers + "301\n"},
                       {"crlf.txt", "one\r\n2\r\n"},
                       {"no end", "c\nb"},
                       {"gets end", "a\nb\n"},
                       {"new folder/new", "new"},
                       {"em pty", ""},
                       {"ü \"\t\x01", "odder\n"},
                       {"--- a", "--- b\n+++ a\n@@ -1 +1 @@\n"}});
        fs::remove(project / "gone");
        fs::create_directory(project / "su b");
        fs::rename(project / "sub/with blank", project / "su b/moved");
        after = filesIn(project.folder.path());
    }

    /// The files that become of those before.
    std::map<std::string, std::string> apply(const std::string& command) const {
        const TemporaryFolder other;
        for (const auto& [path, bytes] : before)
            writeFile(other / path, bytes);
        const TemporaryFolder patches;
        writeFile(patches / "patch", project.run({"diff"}));
        const Outcome outcome =
            runShell(other.path(), command + " < '" + (patches / "patch").string() + "'");
        EXPECT_EQ(outcome.status, 0) << outcome;
        return filesIn(other.path());
    }

    const HistoryProject project;
    std::map<std::string, std::string> before;
    std::map<std::string, std::string> after;
};

TEST_F(DiffAsPatch, IsTakenByPatch) {
    EXPECT_EQ(apply("patch --batch --strip=1"), after);
}

TEST_F(DiffAsPatch, IsTakenByGit) {
    EXPECT_EQ(apply("git apply -"), after);
}

}  // namespace
