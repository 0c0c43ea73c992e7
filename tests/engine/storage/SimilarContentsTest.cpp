#include <engine/storage/SimilarContents.h>
#include <tests/engine/storage/PackFolder.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using qrv::DigestBytes;
using qrv::NextBase;
using qrv::Packs;
using qrv::SimilarContents;
using qrv::Sketch;
using qrv::Sketching;
using qrv_test::digestOf;
using qrv_test::randomBytes;
using testing::ElementsAre;
using testing::IsEmpty;

std::string drawing(unsigned number) {
    return randomBytes(20'000, number);
}

/// A drawing with some of its own.
std::string copyOf(unsigned number, unsigned seed, std::size_t ownBytes = 500) {
    return drawing(number).insert(seed * 101 % 20'000, randomBytes(ownBytes, 1000 + seed));
}

Sketch sketchOf(const std::string& contents) {
    return Sketching::of(contents).value();
}

class SimilarContentsTest : public qrv_test::PackFolder {
protected:
    /// Adds contents as a command does, which are kept against what is most similar. Gives the
    /// depth of their block.
    int store(const std::string& contents) {
        const std::vector<NextBase> bases = similar_.basesFor(sketchOf(contents), 1);
        std::optional<qrv::DifferenceBase> base;
        qrv::Bytes bytes;
        if (!bases.empty()) {
            bytes = qrv::readWhole(*packs_.open(bases[0].digest).value()).value();
            base = {.digest = bases[0].digest,
                    .contents = bytes.span(),
                    .depth = bases[0].depth,
                    .roundStart = bases[0].roundStart};
        }
        const DigestBytes digest = digestOf(contents);
        packs_.writer().add(digest, contents, base, sketchOf(contents)).value();
        similar_.add(digest, sketchOf(contents));
        return packs_.find(digest).value()->block.depth;
    }
    static std::vector<DigestBytes> digestsOf(const std::vector<NextBase>& bases) {
        std::vector<DigestBytes> digests;
        for (const NextBase& base : bases)
            digests.push_back(base.digest);
        return digests;
    }

    Packs packs_{root_};
    SimilarContents similar_{packs_};
};

TEST_F(SimilarContentsTest, AreNoneWhereNothingIsKept) {
    EXPECT_THAT(similar_.basesFor(sketchOf(drawing(1)), 5), IsEmpty());
}

TEST_F(SimilarContentsTest, AreFoundInThePacks) {
    {
        qrv::PackWriter writer(root_);
        for (unsigned number = 1; number <= 5; ++number)
            add(writer, drawing(number), sketchOf(drawing(number)));
        writer.finish().value();
    }
    const auto bases = similar_.basesFor(sketchOf(copyOf(3, 1)), 5);
    EXPECT_THAT(digestsOf(bases), ElementsAre(digestOf(drawing(3))));
    EXPECT_EQ(bases[0].depth, 2);
    EXPECT_THAT(similar_.basesFor(sketchOf(drawing(6)), 5), IsEmpty());
}

TEST_F(SimilarContentsTest, AreFoundAmongWhatTheCommandHasAdded) {
    EXPECT_EQ(store(drawing(1)), 1);
    EXPECT_EQ(store(drawing(2)), 1);
    EXPECT_EQ(store(copyOf(1, 1)), 2);
    EXPECT_THAT(digestsOf(similar_.basesFor(sketchOf(copyOf(1, 1, 499)), 1)),
                ElementsAre(digestOf(copyOf(1, 1))));
}

TEST_F(SimilarContentsTest, HaveRoomBehindThem) {
    for (unsigned seed = 0; seed < 60; ++seed)
        EXPECT_LE(store(copyOf(1, seed, 50)), qrv::deepestSketched + 1) << seed;
    packs_.flush().value();
    SimilarContents anew(packs_);
    const auto bases = anew.basesFor(sketchOf(copyOf(1, 99, 50)), 100);
    EXPECT_FALSE(bases.empty());
    for (const NextBase& base : bases)
        EXPECT_LE(packs_.find(base.digest).value()->block.depth, qrv::deepestSketched);
}

TEST_F(SimilarContentsTest, TakeAFractionOfTheirSize) {
    for (unsigned seed = 0; seed < 60; ++seed)
        store(copyOf(1, seed, 50));
    const std::string name = packs_.writer().finish().value();
    EXPECT_LT(std::filesystem::file_size(fileOf(name)), 20'000 + 60 * 400U);
    for (unsigned seed = 0; seed < 60; ++seed)
        EXPECT_EQ(read(copyOf(1, seed, 50)), copyOf(1, seed, 50));
}

TEST_F(SimilarContentsTest, AreLeftOutWhenTheyCannotBeRead) {
    std::string name;
    {
        qrv::PackWriter writer(root_);
        add(writer, drawing(1), sketchOf(drawing(1)));
        name = writer.finish().value();
    }
    qrv_test::writeFile(fileOf(name).parent_path() / "0123456789abcdef.pack", "no pack");
    EXPECT_THAT(similar_.basesFor(sketchOf(copyOf(1, 1)), 5), testing::SizeIs(1));
    std::filesystem::remove(fileOf(name));
    SimilarContents anew(packs_);
    EXPECT_THAT(anew.basesFor(sketchOf(copyOf(1, 1)), 5), IsEmpty());
}

}  // namespace
