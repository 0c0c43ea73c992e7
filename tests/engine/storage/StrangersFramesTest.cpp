#include <engine/base/Digest.h>
#include <engine/storage/FrameStore.h>
#include <sys/Memory.h>
#include <tests/engine/storage/Contents.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using qrv::Database;
using qrv::DatabaseError;
using qrv::DatabaseTransaction;
using qrv::Digest;
using qrv::Frame;
using qrv::FrameLayout;
using qrv::FrameStore;
using qrv_test::MemoryReader;
using qrv_test::readAll;
using qrv_test::revision;

constexpr std::int64_t mebibyte = std::int64_t{1} << 20;
constexpr FrameLayout layout = {.applicationId = 4711,
                                .longestChain = 16,
                                .longestSpanBytes = 1024 * mebibyte,
                                .worthPercent = 90};

/// Bytes that no compression makes shorter; many, in little time.
std::string noise(std::int64_t size) {
    std::mt19937_64 random(1);
    std::vector<std::uint64_t> words(static_cast<std::size_t>(size) / sizeof(std::uint64_t));
    for (std::uint64_t& word : words)
        word = random();
    std::string bytes(words.size() * sizeof(std::uint64_t), '\0');
    std::memcpy(bytes.data(), words.data(), bytes.size());
    return bytes;
}

class StrangersFrames : public testing::Test {
protected:
    FrameStore opened(const FrameLayout& frames = layout) const {
        return {std::make_shared<Database>(path_, Database::Access::create),
                Database::Access::create, frames};
    }
    static void add(FrameStore& store, const std::string& contents) {
        MemoryReader reader(contents);
        DatabaseTransaction transaction(store.database());
        store.add(reader, store.newest()).value();
        transaction.commit();
    }
    /// "whole", or the error with "FILE" and "DIGEST" for names.
    std::string read(FrameStore& store, const std::string& contents) const {
        const std::string digest = Digest::of(contents);
        const auto reader = store.open(store.find(digest).value());
        if (reader)
            return readAll(**reader, std::size_t{1} << 20) == contents ? "whole" : "other contents";
        const std::string text = reader.error().message.toNarrow();
        return qrv_test::replaced(qrv_test::replaced(text, digest, "DIGEST"), path_.toNarrow(),
                                  "FILE");
    }

    const qrv_test::TemporaryFolder folder_;
    const OdString path_ = folder_.text("frames");
};

// A store of a megabyte asked for four gigabytes, and on a smaller machine the system ended the
// process: a few bytes of a frame stand for any number of equal ones.
TEST_F(StrangersFrames, AreNotReadWhenTheyTakeMoreMemoryThanThereIs) {
    const std::string first = noise(36 * mebibyte);
    const std::string second = first + "b";
    FrameStore store = opened();
    add(store, first);
    add(store, second);
    ASSERT_EQ(store.frames().back().base, 1);
    {
        const sys::ScopedMemoryAtHand memory(50 * mebibyte);
        EXPECT_EQ(read(store, second),
                  "The version DIGEST in 'FILE' cannot be read: it takes 73 MiB of memory, and "
                  "50 MiB are free");
        // It stands alone, and its window is short.
        EXPECT_EQ(read(store, first), "whole");
    }
    const sys::ScopedMemoryAtHand memory(73 * mebibyte);
    EXPECT_EQ(read(store, second), "whole");
}

TEST_F(StrangersFrames, AreNotLongerTogetherThanAnyThatWereMade) {
    FrameStore store = opened();
    add(store, revision(1));
    add(store, revision(2));
    FrameLayout small = layout;
    small.longestSpanBytes = static_cast<std::int64_t>(revision(1).size() + revision(2).size());
    store = opened(small);
    EXPECT_EQ(read(store, revision(2)), "whole");
    --small.longestSpanBytes;
    store = opened(small);
    EXPECT_EQ(read(store, revision(2)),
              "The version DIGEST in 'FILE' is damaged: its size is impossible");
}

TEST_F(StrangersFrames, AreTheSameWhenTheirBasesAreKept) {
    FrameStore store = opened();
    for (unsigned number = 1; number <= 40; ++number)
        add(store, revision(number));
    store.keepBases();
    for (unsigned number = 1; number <= 40; ++number)
        EXPECT_EQ(read(store, revision(number)), "whole") << number;
    for (unsigned number = 40; number >= 1; --number)
        EXPECT_EQ(read(store, revision(number)), "whole") << number;
}

/// Lets the table's one page stand twice below a new one.
void doubleRows(const std::string& file, std::size_t page) {
    constexpr std::size_t pageSize = 4096;
    std::string bytes = qrv_test::readFile(file);
    const std::size_t at = (page - 1) * pageSize;
    const std::string leaf = bytes.substr(at, pageSize);
    const auto copy = static_cast<char>(bytes.size() / pageSize + 1);
    const std::string child = std::string(3, '\0') + copy;
    // One cell, at 4000, and the page behind it.
    std::string inner = std::string("\x05\0\0\0\x01\x0F\xA0\0", 8) + child + "\x0F\xA0";
    inner.resize(pageSize);
    inner.replace(4000, 5, child + '\x01');
    bytes.replace(at, pageSize, inner);
    bytes += leaf;
    bytes.replace(28, 4, child);
    qrv_test::writeFile(file, bytes);
}

TEST_F(StrangersFrames, ThatComeAgainAreNotListed) {
    std::size_t page = 0;
    {
        FrameStore store = opened();
        add(store, revision(1));
        qrv::Statement root =
            store.database().prepare("SELECT rootpage FROM sqlite_schema WHERE name = 'frames'");
        root.step();
        page = static_cast<std::size_t>(root.integer(0));
    }
    doubleRows(path_.toNarrow(), page);
    FrameStore store = opened();
    try {
        ADD_FAILURE() << store.frames().size();
    } catch (const DatabaseError& error) {
        EXPECT_EQ(error.description(), L"'" + path_ + L"' is damaged: its entry 1 cannot be");
    }
}

TEST_F(StrangersFrames, AreNotMixedWithTablesOfSomebodyElse) {
    Database(path_, Database::Access::create).execute("CREATE TABLE other (x)");
    EXPECT_THROW(opened(), DatabaseError);
    Database file(path_, Database::Access::readOnly);
    qrv::Statement names = file.prepare("SELECT group_concat(name) FROM sqlite_schema");
    names.step();
    EXPECT_EQ(names.text(0), OdString(L"other"));
}

}  // namespace
