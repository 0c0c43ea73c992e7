#include <tests/engine/storage/PackFolder.h>
#include <tests/support/Effort.h>

#include <sys/stat.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using qrv::PackWriter;
using qrv_test::digestOf;
using qrv_test::randomBytes;
using qrv_test::readFile;
using qrv_test::revision;
using qrv_test::writeFile;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class PackDamage : public qrv_test::PackFolder {
protected:
    PackDamage() {
        for (int number = 0; number < 100; ++number)
            all_.push_back("contents " + std::to_string(number));
        all_.push_back(randomBytes(70000, 1));
        all_.push_back(std::string(70000, 'x'));
        all_.push_back(revision(1, 70000));
        all_.push_back(revision(2, 70000));
        PackWriter writer(root_);
        for (const std::string& contents : all_)
            add(writer, contents);
        const std::string last = revision(3, 70000);
        writer
            .add(digestOf(last), last,
                 qrv::DifferenceBase{.digest = digestOf(all_.back()), .contents = all_.back()},
                 qrv::Sketch())
            .value();
        all_.push_back(last);
        name_ = writer.finish().value();
        whole_ = readFile(fileOf(name_));
        fs::permissions(fileOf(name_), fs::perms(0644));
    }

    /// How many of the contents are lost; none may be others than they were.
    int countLost() const {
        qrv::Packs packs(root_);
        int lost = 0;
        for (const std::string& contents : all_) {
            const std::string got = read(packs, digestOf(contents));
            lost += got == contents ? 0 : 1;
            EXPECT_TRUE(got == contents || got == "not there" || got.starts_with("error: "));
        }
        return lost;
    }
    void writePack(const std::string& bytes) const { writeFile(fileOf(name_), bytes); }
    std::string readFirst() const { return read(all_.front()); }

    std::vector<std::string> all_;
    std::string name_;
    std::string whole_;
};

TEST_F(PackDamage, IsToldWhereverAByteOfTheTablesIsAnotherAndCostsOnlyWhatStandsThere) {
    const qrv::PackTrailer trailer = opened(name_)->trailer();
    EXPECT_THAT(opened(name_)->damage().value(), IsEmpty());
    EXPECT_EQ(countLost(), 0);
    const std::size_t step = qrv_test::isExhaustive() ? 1 : 61;
    for (auto at = static_cast<std::size_t>(trailer.blocksEnd); at < whole_.size(); at += step) {
        std::string bytes = whole_;
        bytes[at] = static_cast<char>(bytes[at] ^ 0x10);
        writePack(bytes);
        const auto place = static_cast<std::int64_t>(at);
        EXPECT_THAT(opened(name_)->damage().value(), Not(IsEmpty())) << at;
        const int lost = countLost();
        // The last contents build on those before them.
        const int most = place >= trailer.sketchesAt() ? 0 : place >= trailer.entriesAt() ? 2 : 100;
        EXPECT_LE(lost, most) << at;
    }
}

TEST_F(PackDamage, InABlockCostsItsContents) {
    for (const std::size_t at : {0U, 15U, 16U, 300U, 70000U, 90000U}) {
        std::string bytes = whole_;
        bytes[at] = static_cast<char>(bytes[at] ^ 0x10);
        writePack(bytes);
        EXPECT_LE(countLost(), 100) << at;
        EXPECT_EQ(opened(name_)->damage().value().empty(), at >= 16) << at;
    }
}

TEST_F(PackDamage, OfTheWholeFileIsToldByWhoeverMissesSomethingThatMayHaveBeenThere) {
    const std::string path = "error: '.qrv/packs/" + name_ + ".pack' ";
    writePack("");
    EXPECT_EQ(readFirst(), path + "is damaged: it is too short");
    writePack(whole_.substr(0, whole_.size() - 1));
    EXPECT_EQ(readFirst(), path + "is damaged: its end is not that of a pack");
    writePack(whole_ + "more");
    EXPECT_EQ(readFirst(), path + "is damaged: its end is not that of a pack");
    writePack(whole_.substr(1));
    EXPECT_EQ(readFirst(), path + "is damaged: its end is not that of a pack");
    packOf({all_.front()});
    EXPECT_EQ(readFirst(), all_.front());
}

TEST_F(PackDamage, IsNotTakenForANewerLayout) {
    std::string bytes = whole_;
    bytes[bytes.size() - 64] = 2;
    bytes[bytes.size() - 64 - 72] = 2;
    writePack(bytes);
    EXPECT_EQ(readFirst(), "error: '.qrv/packs/" + name_ +
                               ".pack' was written by a newer version of this program");
}

TEST_F(PackDamage, AFileThatIsNoneIsNeitherFollowedNorWaitedFor) {
    fs::remove(fileOf(name_));
    fs::create_symlink("/etc/passwd", fileOf(name_));
    EXPECT_THAT(readFirst(), StartsWith("error: '.qrv/packs/" + name_ + ".pack' cannot be read: "));
    fs::remove(fileOf(name_));
    ASSERT_EQ(::mkfifo(fileOf(name_).c_str(), 0600), 0);
    EXPECT_THAT(readFirst(), HasSubstr("cannot be read: it is not a regular file"));
    EXPECT_FALSE(qrv::Packs(root_).has(digestOf(all_.front())));
}

/// A pack whose tables somebody made up.
class StrangersPack : public qrv_test::PackFolder {
protected:
    /// A pack of one block with these contents.
    void writePack(const qrv::PackBlock& block, const std::string& stored,
                   const std::vector<qrv::PackEntry>& entries) {
        std::string bytes(qrv::packHeader);
        bytes += stored;
        qrv::PackTrailer trailer = {
            .blocksEnd = std::ssize(bytes), .blockCount = 1, .entryCount = std::ssize(entries)};
        append(bytes, block);
        std::string rows;
        for (const qrv::PackEntry& entry : entries)
            append(rows, entry);
        std::string pages;
        append(pages, qrv::PackPage{.firstDigest = 0, .checksum = qrv::checksumOf(rows)});
        trailer.pageChecksum = qrv::checksumOf(pages);
        trailer.sketchChecksum = qrv::checksumOf("");
        bytes += rows + pages;
        append(bytes, trailer);
        append(bytes, trailer);
        writeFile(folder_ / ".qrv/packs/0123456789abcdef.pack", bytes);
    }
};

TEST_F(StrangersPack, NoNumberInItIsBelieved) {
    const std::string place = "error: '.qrv/packs/0123456789abcdef.pack' is damaged: ";
    const std::string version = "error: The version " + qrv::Digest::of("contents") +
                                " in '.qrv/packs/0123456789abcdef.pack' is damaged: ";
    const qrv::PackEntry entry = {.digest = digestOf("contents"), .sizeBytes = 8};
    const qrv::PackBlock whole = {.offset = 16, .storedBytes = 8, .sizeBytes = 8};
    writePack(whole, "contents", {entry});
    EXPECT_EQ(read("contents"), "contents");

    qrv::PackBlock block = whole;
    block.offset = 17;
    writePack(block, "contents", {entry});
    EXPECT_EQ(read("contents"), place + "an entry of its tables is impossible");
    block.offset = 0;
    writePack(block, "contents", {entry});
    EXPECT_EQ(read("contents"), place + "an entry of its tables is impossible");

    qrv::PackEntry other = entry;
    other.block = 1;
    writePack(whole, "contents", {other});
    EXPECT_EQ(read("contents"), place + "an entry of its tables is impossible");
    other = entry;
    other.position = 1;
    writePack(whole, "contents", {other});
    EXPECT_EQ(read("contents"), place + "an entry of its tables is impossible");

    // As many bytes as only a lie gives.
    block = {.offset = 16,
             .storedBytes = 8,
             .sizeBytes = std::int64_t{1} << 50,
             .kind = qrv::BlockKind::frame};
    other = entry;
    other.sizeBytes = 0;
    writePack(block, "contents", {other});
    EXPECT_EQ(read("contents"), version + "its size is impossible");
    block.sizeBytes = 8 * 32768;
    other.sizeBytes = 8 * 32768;
    writePack(block, "contents", {other});
    EXPECT_EQ(read("contents"), version + "it is no frame");

    writePack(whole, "CONTENTS", {entry});
    EXPECT_EQ(read("contents"), version + "its contents are not those that were stored");
}

TEST_F(StrangersPack, ADifferenceFromItselfIsNotFollowedForEver) {
    const std::string version = "error: The version " + qrv::Digest::of("contents") +
                                " in '.qrv/packs/0123456789abcdef.pack' is damaged: ";
    const qrv::PackEntry entry = {.digest = digestOf("contents"), .sizeBytes = 8};
    qrv::PackBlock block = {.offset = 16,
                            .storedBytes = 8,
                            .sizeBytes = 8,
                            .kind = qrv::BlockKind::difference,
                            .depth = 2,
                            .roundStart = 1,
                            .base = digestOf("contents")};
    writePack(block, "contents", {entry});
    EXPECT_EQ(read("contents"), version + "it builds on too many others");
    block.base = digestOf("other");
    writePack(block, "contents", {entry});
    EXPECT_EQ(read("contents"), version + "one that it builds on is missing");
}

}  // namespace
