#include <engine/storage/BlockReader.h>
#include <sys/ScopedFault.h>
#include <tests/engine/storage/PackFolder.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace {

namespace fs = std::filesystem;
using qrv::BlockKind;
using qrv::PackEntry;
using qrv::PackReader;
using qrv::PackWriter;
using qrv_test::digestOf;
using qrv_test::randomBytes;
using qrv_test::readFile;
using qrv_test::revision;
using qrv_test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Sixteen bytes a line.
std::string hexDump(const std::string& bytes) {
    std::string dump;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x%c", static_cast<unsigned char>(bytes[at]),
                      at % 16 == 15 || at + 1 == bytes.size() ? '\n' : ' ');
        dump += digits;
    }
    return dump;
}

/// Text that compresses well.
std::string lines(std::size_t count, const std::string& word = "line") {
    std::string text;
    for (std::size_t number = 0; number < count; ++number)
        text += word + " " + std::to_string(number) + "\n";
    return text;
}

class Pack : public qrv_test::PackFolder {
protected:
    qrv::PackBlock blockOf(const std::string& name, const std::string& contents) const {
        return opened(name)->find(digestOf(contents)).value()->block;
    }
};

TEST_F(Pack, HasTheFormThatItsPageShows) {
    const std::string name = packOf({"hello\n", "world\n"});
    EXPECT_EQ(hexDump(readFile(fileOf(name))),
              readFile(fs::path(QRV_FRAME_SAMPLES) / "pack.sample"));
}

TEST_F(Pack, GivesBackWhatWasAdded) {
    const std::vector<std::string> all = {"",
                                          "small",
                                          lines(100),
                                          randomBytes(1000, 1),
                                          std::string(65536, 'x'),
                                          std::string(65537, 'y'),
                                          randomBytes(65537, 2),
                                          lines(50000),
                                          randomBytes(500000, 3)};
    packOf(all);
    for (const std::string& contents : all)
        EXPECT_TRUE(read(contents) == contents) << contents.size();
    EXPECT_EQ(read("other"), "not there");
}

TEST_F(Pack, IsOneFileThatNobodyWritesTo) {
    const std::string name = packOf({"one", "two"});
    EXPECT_THAT(files(), ElementsAre(name + ".pack"));
    EXPECT_EQ(fs::status(fileOf(name)).permissions(), fs::perms(0444));
}

TEST_F(Pack, WithoutContentsIsNone) {
    PackWriter writer(root_);
    EXPECT_TRUE(writer.isEmpty());
    EXPECT_EQ(writer.finish().value(), "");
    EXPECT_FALSE(fs::exists(folder_ / ".qrv"));
}

TEST_F(Pack, ThatWasNotFinishedLeavesNothing) {
    {
        PackWriter writer(root_);
        add(writer, randomBytes(1000000, 1));
        EXPECT_THAT(files(), SizeIs(1));
    }
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(Pack, KeepsEqualContentsOnce) {
    const std::string once = packOf({lines(10), randomBytes(100000, 1)});
    EXPECT_EQ(packOf({lines(10), randomBytes(100000, 1), lines(10), randomBytes(100000, 1)}), once);
}

TEST_F(Pack, PutsSmallContentsIntoOneBlock) {
    const std::string name = packOf({"one", "two", lines(1000), "three"});
    EXPECT_EQ(opened(name)->trailer().blockCount, 1);
    EXPECT_EQ(opened(name)->trailer().entryCount, 4);
}

TEST_F(Pack, BeginsANewBlockForMoreThanOneHolds) {
    std::vector<std::string> all;
    for (unsigned seed = 0; seed < 5; ++seed)
        all.push_back(randomBytes(60000, seed));
    EXPECT_EQ(opened(packOf(all))->trailer().blockCount, 3);
}

TEST_F(Pack, KeepsWhatDoesNotCompressAsItIs) {
    const std::string noise = randomBytes(100000, 1);
    const std::string name = packOf({noise, lines(50000)});
    EXPECT_EQ(blockOf(name, noise).kind, BlockKind::raw);
    EXPECT_EQ(blockOf(name, lines(50000)).kind, BlockKind::frame);
}

TEST_F(Pack, KeepsADifferenceWhereThatPays) {
    const std::string base = revision(1, 40000);
    const std::string like = revision(2, 40000);
    const std::string unlike = randomBytes(40000, 99);
    PackWriter writer(root_);
    add(writer, base);
    for (const std::string& contents : {like, unlike})
        writer
            .add(digestOf(contents), contents,
                 qrv::DifferenceBase{
                     .digest = digestOf(base), .contents = base, .depth = 2, .roundStart = 1},
                 std::nullopt)
            .value();
    const std::string name = writer.finish().value();

    const qrv::PackBlock block = blockOf(name, like);
    EXPECT_EQ(block.kind, BlockKind::difference);
    EXPECT_EQ(block.base, digestOf(base));
    EXPECT_EQ(block.depth, 2);
    EXPECT_LT(block.storedBytes, 200);
    EXPECT_NE(blockOf(name, unlike).kind, BlockKind::difference);
    EXPECT_TRUE(read(like) == like);
    EXPECT_TRUE(read(unlike) == unlike);
}

TEST_F(Pack, TakesContentsOfAnyLengthPieceByPiece) {
    for (const std::string& contents : {std::string(), lines(200000), randomBytes(600000, 5)}) {
        PackWriter writer(root_);
        qrv_test::MemoryReader reader(contents);
        EXPECT_EQ(writer.addStreamed(reader, std::nullopt).value(), digestOf(contents));
        const std::string name = writer.finish().value();
        EXPECT_TRUE(read(contents) == contents) << contents.size();
        EXPECT_LE(fs::file_size(fileOf(name)), contents.size() + 400);
    }
}

TEST_F(Pack, AddsNothingThatCannotBeRead) {
    PackWriter writer(root_);
    qrv_test::MemoryReader reader(lines(100000), 600000);
    EXPECT_EQ(writer.addStreamed(reader, std::nullopt).error().message,
              OdString(L"The disk is broken"));
    EXPECT_TRUE(writer.isEmpty());
    add(writer, "other");
    writer.finish().value();
    EXPECT_EQ(read("other"), "other");
}

TEST_F(Pack, FindsContentsBeforeItIsFinished) {
    PackWriter writer(root_);
    const std::vector<std::string> all = {"small", lines(50000), "more"};
    qrv::BlockReader blocks;
    for (const std::string& contents : all)
        add(writer, contents);
    for (const std::string& contents : all) {
        const qrv::PackedContents place = writer.find(digestOf(contents)).value().value();
        const auto reader = blocks.open(place, nullptr, qrv::FrameReader::Check::digest).value();
        EXPECT_TRUE(qrv_test::readAll(*reader) == contents);
    }
    EXPECT_FALSE(writer.find(digestOf("none")).value());
    add(writer, "later");
    writer.finish().value();
    EXPECT_EQ(read("small"), "small");
    EXPECT_EQ(read("later"), "later");
}

TEST_F(Pack, FindsEachOfManyContents) {
    std::vector<std::string> all;
    for (int number = 0; number < 1000; ++number)
        all.push_back("contents " + std::to_string(number));
    const auto pack = opened(packOf(all));
    EXPECT_EQ(pack->trailer().pageCount(), 11);
    for (const std::string& contents : all)
        EXPECT_TRUE(pack->find(digestOf(contents)).value()) << contents;
    EXPECT_FALSE(pack->find(digestOf("contents 1000")).value());
    const std::vector<PackEntry> entries = pack->entries().value();
    EXPECT_THAT(entries, SizeIs(1000));
    EXPECT_TRUE(std::is_sorted(entries.begin(), entries.end(),
                               [](auto& left, auto& right) { return left.digest < right.digest; }));
}

TEST_F(Pack, KeepsSketchesBesideTheirContents) {
    PackWriter writer(root_);
    for (std::uint16_t number = 0; number < 10; ++number) {
        const bool hasSketch = number % 2 == 1;
        add(writer, std::to_string(number),
            hasSketch ? std::optional(qrv::Sketch{.features = {number, 1, 2}}) : std::nullopt);
    }
    const auto pack = opened(writer.finish().value());
    const std::vector<PackEntry> entries = pack->entries().value();
    std::vector<std::uint16_t> found;
    const std::vector<qrv::PackSketch> sketches = pack->sketches().value();
    for (const qrv::PackSketch& sketch : sketches) {
        EXPECT_EQ(entries[sketch.entry].digest,
                  digestOf(std::to_string(sketch.sketch.features[0])));
        found.push_back(sketch.sketch.features[0]);
    }
    EXPECT_THAT(found, ElementsAre(1, 3, 5, 7, 9));
}

TEST_F(Pack, TakesOverBlocksOfAnother) {
    const std::string noise = randomBytes(300000, 1);
    const auto from = opened(packOf({"one", "two", lines(50000), noise}));
    const std::vector<PackEntry> entries = from->entries().value();
    PackWriter writer(root_);
    add(writer, "two");
    for (std::uint32_t number = 0; number < from->trailer().blockCount; ++number) {
        std::vector<qrv::KeptEntry> kept;
        for (const PackEntry& entry : entries) {
            if (entry.block == number)
                kept.push_back({.entry = entry, .sketch = qrv::Sketch()});
        }
        writer.copy(*from, from->block(number).value(), kept).value();
    }
    const std::string name = writer.finish().value();
    EXPECT_EQ(opened(name)->trailer().entryCount, 4);
    EXPECT_EQ(opened(name)->trailer().sketchCount, 3);
    qrv::Packs packs(root_);
    for (const std::string& contents :
         {std::string("one"), std::string("two"), lines(50000), noise})
        EXPECT_TRUE(read(packs, digestOf(contents)) == contents);
    EXPECT_THAT(opened(name)->damage().value(), IsEmpty());
}

TEST_F(Pack, IsThereAsAWholeOrNotAtAllWhicheverCallFails) {
    int failures = 0;
    for (int nth = 1;; ++nth) {
        fs::remove_all(folder_ / ".qrv");
        bool isDone = false;
        bool hasFired = false;
        {
            const sys::ScopedFault fault(nth, ENOSPC);
            PackWriter writer(root_);
            const std::string noise = randomBytes(300000, 1);
            const Expected<void> small =
                writer.add(digestOf("small"), std::string("small"), std::nullopt, std::nullopt);
            const Expected<void> large =
                writer.add(digestOf(noise), noise, std::nullopt, std::nullopt);
            const Expected<std::string> name = small && large ? writer.finish() : std::string();
            isDone = small && large && name;
            if (small && !large) {
                EXPECT_EQ(large.error().message, OdString(L"No space left on device"));
            }
            if (small && large && !name) {
                EXPECT_EQ(name.error().message,
                          OdString(L"'.qrv/packs' cannot be written: No space left on device"));
            }
            hasFired = fault.hasFired();
        }
        if (!hasFired)
            break;
        failures += isDone ? 0 : 1;
        const bool isThere = read("small") == "small";
        EXPECT_TRUE(isThere || !isDone) << nth;
        EXPECT_LE(fs::exists(folder_ / ".qrv/packs") ? files().size() : 0, 1U) << nth;
    }
    EXPECT_GE(failures, 8);
}

}  // namespace
