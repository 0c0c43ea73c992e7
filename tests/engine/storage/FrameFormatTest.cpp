// The files of frames have the form that their pages in docs/formats show.

#include <engine/base/Digest.h>
#include <engine/storage/PackFile.h>
#include <tests/engine/storage/FrameStoreFile.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

using qrv::Database;
using qrv::Digest;
using qrv::Statement;
using qrv_test::revision;

std::string sample(const std::string& name) {
    return qrv_test::readFile(std::filesystem::path(QRV_FRAME_SAMPLES) / name);
}

std::string setting(Database& database, const std::string& name) {
    Statement value = database.prepare(("PRAGMA " + name).c_str());
    value.step();
    return "PRAGMA " + name + " = " + std::to_string(value.integer(0)) + ";\n";
}

std::string form(Database& database) {
    std::string text = setting(database, "application_id") + setting(database, "user_version") +
                       setting(database, "auto_vacuum");
    Statement parts =
        database.prepare("SELECT sql FROM sqlite_schema WHERE sql IS NOT NULL ORDER BY rowid");
    while (parts.step())
        text += parts.text(0).toNarrow() + ";\n";
    return text;
}

// One line a frame: its number, its base, the size of the contents and their digest.
std::string rows(Database& database) {
    std::string text;
    Statement frames = database.prepare(
        "SELECT number, coalesce(base, '-'), size, lower(hex(digest)) FROM frames ORDER BY number");
    while (frames.step()) {
        for (int column = 0; column < 4; ++column)
            text += (column == 0 ? "" : " | ") + frames.text(column).toNarrow();
        text += "\n";
    }
    return text;
}

class FrameFormat : public testing::Test {
protected:
    const qrv_test::TemporaryFolder folder_;
    const common::RootPath root_ = common::RootPath::get(folder_.text(), true).value();
};

TEST_F(FrameFormat, OfADrawingStore) {
    qrv_test::oldStoreOf(folder_.text(), "plan", {revision(1)});

    Database database(folder_.text(".qrv/tf/plan.tf"), Database::Access::readOnly);
    EXPECT_EQ(form(database), sample("drawing-store.sample"));
}

TEST_F(FrameFormat, OfAPack) {
    qrv::PackFile pack = qrv::PackFile::openForChange(root_);
    std::optional<std::string> previous;
    qrv::DatabaseTransaction transaction(pack.database());
    for (unsigned number = 1; number <= 10; ++number) {
        qrv_test::MemoryReader reader(revision(number));
        ASSERT_TRUE(pack.add(Digest::of(revision(number)), reader, previous));
        previous = Digest::of(revision(number));
    }
    transaction.commit();

    EXPECT_EQ(form(pack.database()),
              qrv_test::replaced(sample("drawing-store.sample"), "1903326820", "1903326832"));
    EXPECT_EQ(rows(pack.database()), sample("pack-file.sample"));
}

}  // namespace
