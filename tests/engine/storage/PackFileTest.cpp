#include <engine/base/Digest.h>
#include <engine/storage/PackFile.h>
#include <tests/engine/storage/Contents.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace {

using qrv::Database;
using qrv::DatabaseError;
using qrv::DatabaseTransaction;
using qrv::Digest;
using qrv::PackFile;
using qrv_test::MemoryReader;
using qrv_test::randomBytes;
using qrv_test::readAll;
using qrv_test::revision;
using testing::ElementsAre;

// Gives zeros, as many as it says, without holding them.
class Zeros : public qrv::VersionReader {
public:
    explicit Zeros(std::int64_t size) : size_(size) {}

    Expected<std::size_t> read(std::span<char> buffer) override {
        const auto count = std::min(buffer.size(), static_cast<std::size_t>(size_ - position_));
        std::fill_n(buffer.begin(), count, '\0');
        position_ += static_cast<std::int64_t>(count);
        return count;
    }
    std::int64_t sizeBytes() const override { return size_; }

private:
    std::int64_t size_;
    std::int64_t position_ = 0;
};

class PackFileTest : public testing::Test {
protected:
    void add(const std::string& contents, const std::optional<std::string>& base = std::nullopt) {
        MemoryReader reader(contents);
        DatabaseTransaction transaction(pack_.database());
        std::optional<std::string> baseDigest;
        if (base)
            baseDigest = Digest::of(*base);
        pack_.add(Digest::of(contents), reader, baseDigest).value();
        transaction.commit();
    }
    std::string read(const std::string& contents) {
        const std::unique_ptr<qrv::VersionReader> reader = pack_.read(Digest::of(contents)).value();
        return reader ? readAll(*reader) : "not there";
    }
    std::int64_t storedBytes(const std::string& contents) {
        return pack_.storedBytes(Digest::of(contents));
    }

    const qrv_test::TemporaryFolder folder_;
    const common::RootPath root_ = common::RootPath::get(folder_.text(), true).value();
    PackFile pack_ = opened();

private:
    PackFile opened() const {
        PackFile pack = PackFile::openForChange(root_);
        // Nobody cuts the power here.
        pack.database().execute("PRAGMA synchronous = OFF");
        return pack;
    }
};

TEST_F(PackFileTest, LiesBesideTheObjects) {
    EXPECT_EQ(PackFile::pathOf(root_), folder_.text(".qrv/objects.pack"));
    EXPECT_THAT(qrv_test::listTree(folder_.path()), ElementsAre(".qrv/", ".qrv/objects.pack"));
}

TEST_F(PackFileTest, ThereIsNoneUntilItIsMade) {
    const qrv_test::TemporaryFolder other;
    const common::RootPath root = common::RootPath::get(other.text(), true).value();
    EXPECT_FALSE(PackFile::open(root));
    PackFile::openForChange(root);
    EXPECT_TRUE(PackFile::open(root));
}

TEST_F(PackFileTest, GivesBackWhatWasAdded) {
    for (const std::string contents : {"", "a", "one two three"})
        add(contents);
    add(revision(1));
    add(revision(2), revision(1));

    pack_ = PackFile::open(root_).value();

    for (const std::string& contents : {std::string(), std::string("a"),
                                        std::string("one two three"), revision(1), revision(2)}) {
        EXPECT_TRUE(pack_.contains(Digest::of(contents)));
        EXPECT_TRUE(read(contents) == contents);
    }
    EXPECT_FALSE(pack_.contains(Digest::of("b")));
    EXPECT_EQ(read("b"), "not there");
}

TEST_F(PackFileTest, ListsTheObjectsByDigest) {
    std::vector<std::string> digests;
    for (unsigned number = 1; number <= 10; ++number) {
        add(revision(number));
        digests.push_back(Digest::of(revision(number)));
    }
    std::sort(digests.begin(), digests.end());

    EXPECT_EQ(pack_.digests(), digests);
}

TEST_F(PackFileTest, KeepsADifferenceOnlyWhenItHalvesTheObject) {
    const std::string base = randomBytes(10000, 1);
    const std::string less = base.substr(0, 4800) + randomBytes(5200, 2);
    const std::string more = base.substr(0, 5200) + randomBytes(4800, 3);
    add(base);
    add(less, base);
    add(more, base);

    EXPECT_GT(storedBytes(base), 10000);
    EXPECT_GT(storedBytes(less), 10000);
    EXPECT_LT(storedBytes(more), 5000);
    EXPECT_EQ(storedBytes("not there"), 0);
}

TEST_F(PackFileTest, ChainsHaveAtMostEightFrames) {
    add(revision(1));
    for (unsigned number = 2; number <= 10; ++number)
        add(revision(number), revision(number - 1));

    qrv::Statement bases = pack_.database().prepare("SELECT base FROM frames ORDER BY number");
    std::vector<std::int64_t> numbers;
    while (bases.step())
        numbers.push_back(bases.integer(0));
    EXPECT_THAT(numbers, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 1, 9));
    EXPECT_TRUE(read(revision(8)) == revision(8));
}

TEST_F(PackFileTest, AddingWhatIsThereChangesNothing) {
    add(revision(1));
    MemoryReader unread("other contents", 0);

    EXPECT_TRUE(pack_.add(Digest::of(revision(1)), unread, std::nullopt));

    EXPECT_TRUE(read(revision(1)) == revision(1));
}

TEST_F(PackFileTest, RefusesContentsOfAnotherDigest) {
    add(revision(1));
    const std::vector<std::string> before = pack_.digests();
    for (const std::string& contents : {revision(1), revision(2)}) {
        MemoryReader reader(contents);
        DatabaseTransaction transaction(pack_.database());
        EXPECT_EQ(pack_.add(Digest::of("x"), reader, std::nullopt).error().message.toNarrow(),
                  "The object " + Digest::of("x") +
                      " cannot be packed: its contents have another digest");
        transaction.commit();
    }
    EXPECT_EQ(pack_.digests(), before);
}

TEST_F(PackFileTest, ContentsThatCannotBeReadAreNotAdded) {
    MemoryReader broken(revision(1), 2000);
    DatabaseTransaction transaction(pack_.database());
    EXPECT_EQ(pack_.add(Digest::of(revision(1)), broken, std::nullopt).error().message,
              OdString("The disk is broken"));
    transaction.commit();
    EXPECT_THAT(pack_.digests(), ElementsAre());
}

TEST_F(PackFileTest, RemovesObjectsTogether) {
    add(revision(1));
    for (unsigned number = 2; number <= 6; ++number)
        add(revision(number), revision(number - 1));

    ASSERT_TRUE(
        pack_.remove({Digest::of(revision(1)), Digest::of("not there"), Digest::of(revision(4))}));

    for (unsigned number = 1; number <= 6; ++number)
        EXPECT_TRUE(read(revision(number)) ==
                    (number == 1 || number == 4 ? "not there" : revision(number)))
            << number;
}

TEST_F(PackFileTest, RemovesAllOrNone) {
    for (unsigned number = 1; number <= 3; ++number)
        add(revision(number), revision(number - 1));
    pack_.database().execute("DELETE FROM pieces WHERE frame = 3");

    EXPECT_FALSE(pack_.remove({Digest::of(revision(1)), Digest::of(revision(2))}));

    EXPECT_TRUE(read(revision(1)) == revision(1));
    EXPECT_TRUE(read(revision(2)) == revision(2));
}

TEST_F(PackFileTest, ALongObjectIsPackedWithoutABase) {
    add(revision(1));
    Zeros zeros(std::int64_t{256} << 20);
    Digest digest;
    const std::string mebibyte(1 << 20, '\0');
    for (int count = 0; count < 256; ++count)
        digest.add(mebibyte);
    const std::string name = digest.finish();
    DatabaseTransaction transaction(pack_.database());

    ASSERT_TRUE(pack_.add(name, zeros, Digest::of(revision(1))));

    qrv::Statement row =
        pack_.database().prepare("SELECT base IS NULL FROM frames WHERE size > 4000");
    ASSERT_TRUE(row.step());
    EXPECT_EQ(row.integer(0), 1);
    const std::unique_ptr<qrv::VersionReader> reader = pack_.read(name).value();
    std::string buffer(1 << 20, 'x');
    std::int64_t count = 0;
    for (std::size_t read = 1; read > 0; count += static_cast<std::int64_t>(read)) {
        read = reader->read(buffer).value();
        ASSERT_TRUE(std::string_view(buffer).substr(0, read) ==
                    std::string_view(mebibyte).substr(0, read));
    }
    EXPECT_EQ(count, std::int64_t{256} << 20);
}

TEST_F(PackFileTest, RefusesADrawingStoreAndWhatIsNoFile) {
    const auto complaint = [this](const auto& open) -> std::string {
        try {
            open(root_);
        } catch (const DatabaseError& error) {
            return qrv_test::replaced(error.what(), folder_.path().string(), "ROOT");
        }
        return "none";
    };
    const auto read = [](const common::RootPath& root) { PackFile::open(root); };
    const auto change = [](const common::RootPath& root) { PackFile::openForChange(root); };
    pack_.database().execute("PRAGMA application_id = 1903326820");
    EXPECT_EQ(complaint(read), "'ROOT/.qrv/objects.pack' is a file of another kind");
    std::filesystem::remove(folder_ / ".qrv/objects.pack");
    ASSERT_EQ(mkfifo((folder_ / ".qrv/objects.pack").c_str(), 0600), 0);
    for (const auto& refusal : {complaint(read), complaint(change)})
        EXPECT_EQ(refusal,
                  "The database 'ROOT/.qrv/objects.pack' cannot be used: it is not a "
                  "regular file");
}

TEST_F(PackFileTest, DoesNotLeaveTheRepositoryThroughALink) {
    const qrv_test::TemporaryFolder other;
    std::filesystem::create_directory_symlink(folder_ / ".qrv", other / ".qrv");
    const common::RootPath root = common::RootPath::get(other.text(), false).value();

    EXPECT_THROW(PackFile::open(root), DatabaseError);
    EXPECT_THROW(PackFile::openForChange(root), DatabaseError);
}

}  // namespace
