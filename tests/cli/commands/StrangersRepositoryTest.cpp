#include <engine/database/Database.h>
#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/database/Journals.h>
#include <tests/engine/storage/OldForms.h>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using testing::HasSubstr;

/// What only looks, and what cleans up.
const std::vector<std::vector<std::string>> commands = {
    {"status"},
    {"log"},
    {"show"},
    {"diff"},
    {"diff", "1"},
    {"branch"},
    {"verify"},
    {"gc", "--dry-run"},
    {"restore", "plans", "--from", "1", "--force"},
    {"tag"},
    {"log", "notes/minutes.txt"}};

/// A repository that somebody else made with an earlier program and handed over, with a store and a
/// pack, which are databases.
class StrangersRepository : public testing::Test {
protected:
    StrangersRepository() {
        const std::string archive = std::string(QRV_COMMAND_SAMPLES) + "/repository-layout2.tar.gz";
        const qrv_test::TemporaryFolder unpacked;
        EXPECT_EQ(
            qrv_test::runShell(unpacked.path(),
                               "tar --extract --gzip --no-same-owner --file '" + archive + "'")
                .status,
            0);
        fs::remove_all(project / ".qrv");
        fs::copy(unpacked / "project", project.folder.path(), fs::copy_options::recursive);
    }

    std::vector<fs::path> databases() const {
        std::vector<fs::path> files = {project / ".qrv/qrv.db", project / ".qrv/objects.pack"};
        for (const auto& entry : fs::directory_iterator(project / ".qrv/tf"))
            files.push_back(entry.path());
        return files;
    }

    const HistoryProject project;
};

// A look at a folder that was handed over deleted any file of the receiver whose name stood at the
// end of a journal beside a database.
TEST_F(StrangersRepository, DeletesNothingThatAJournalNames) {
    const qrv_test::TemporaryFolder outside;
    const std::string victim = outside / "victim";
    qrv_test::writeFile(victim, "precious");
    ASSERT_EQ(databases().size(), 3U);
    for (const fs::path& database : databases()) {
        const fs::path journal = database.string() + "-journal";
        const std::string bytes = qrv_test::journalThatNames(
            victim, static_cast<unsigned>(fs::file_size(database) / 4096));
        qrv_test::writeFile(journal, bytes);
        for (const std::vector<std::string>& command : commands) {
            project.qrv(command);
            ASSERT_TRUE(fs::exists(victim)) << database << command.front();
            ASSERT_TRUE(qrv_test::readFile(journal) == bytes) << database << command.front();
        }
        const Outcome verified = project.qrv({"verify"});
        EXPECT_EQ(verified.status, 1);
        EXPECT_THAT(verified.output, HasSubstr("it names another file, which would be deleted"));
        fs::remove(journal);
    }
    EXPECT_EQ(project.qrv({"verify"}).status, 0);
}

TEST_F(StrangersRepository, KeepsNobodyWaitingForAPipe) {
    const qrv_test::TemporaryFolder outside;
    const std::string pipe = outside / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const fs::path& database : databases()) {
        const fs::path journal = database.string() + "-journal";
        qrv_test::writeFile(journal, qrv_test::journalThatNames(pipe));
        EXPECT_EQ(project.qrv({"verify"}).status, 1) << database;
        fs::remove(journal);
    }
}

// A check in a foreign schema kept a commit busy for 25 seconds and took 3.8 GB.
TEST_F(StrangersRepository, RunsNoCodeOfItsSchemas) {
    for (const fs::path& file : databases()) {
        const std::string before = qrv_test::readFile(file);
        qrv::Database(OdString::fromNarrow(file.string()), qrv::Database::Access::readWrite)
            .execute("CREATE TABLE extra (x CHECK (length(hex(zeroblob(900000000))) > x))");
        const Outcome verified = project.qrv({"verify"});
        EXPECT_EQ(verified.status, 1);
        EXPECT_THAT(verified.output, HasSubstr("the table or index 'extra' does not belong there"));
        qrv_test::writeFile(file, before);
    }
    EXPECT_EQ(project.qrv({"verify"}).status, 0);
}

}  // namespace
