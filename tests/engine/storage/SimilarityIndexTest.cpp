#include <engine/storage/SimilarityIndex.h>
#include <tests/engine/storage/Contents.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using qrv::SimilarityIndex;
using qrv::Sketch;
using qrv_test::randomBytes;
using testing::ElementsAre;
using testing::IsEmpty;

// Agrees with one of the same number in `same` features, and with nothing else.
Sketch sketch(std::uint16_t number, std::size_t same, std::uint16_t other) {
    Sketch made;
    for (std::size_t at = 0; at < Sketch::featureCount; ++at)
        made.features[at] = at < same ? number : static_cast<std::uint16_t>(1000 + other + at);
    return made;
}

std::vector<std::uint32_t> found(const SimilarityIndex& index, const Sketch& sketch,
                                 std::size_t atMost = 100) {
    std::vector<std::uint32_t> numbers;
    for (const SimilarityIndex::Match& match : index.mostSimilar(sketch, atMost))
        numbers.push_back(match.number);
    return numbers;
}

TEST(SimilarityIndex, FindsNothingWhenEmpty) {
    EXPECT_THAT(found(SimilarityIndex(), sketch(1, 12, 0)), IsEmpty());
}

TEST(SimilarityIndex, FindsTheBestFirstAndOfEqualOnesTheNewest) {
    SimilarityIndex index;
    EXPECT_EQ(index.add(sketch(1, 5, 100)), 0U);
    EXPECT_EQ(index.add(sketch(1, 9, 200)), 1U);
    EXPECT_EQ(index.add(sketch(2, 12, 0)), 2U);
    EXPECT_EQ(index.add(sketch(1, 5, 300)), 3U);
    EXPECT_THAT(found(index, sketch(1, 12, 0)), ElementsAre(1, 3, 0));
    EXPECT_THAT(found(index, sketch(1, 12, 0), 2), ElementsAre(1, 3));
    EXPECT_EQ(index.mostSimilar(sketch(1, 12, 0), 1).front().agreement, 9U);
    EXPECT_EQ(index.size(), 4U);
}

TEST(SimilarityIndex, TakesOneFeatureForChance) {
    SimilarityIndex index;
    index.add(sketch(1, 1, 100));
    EXPECT_THAT(found(index, sketch(1, 12, 0)), IsEmpty());
    index.add(sketch(1, 2, 200));
    EXPECT_THAT(found(index, sketch(1, 12, 0)), ElementsAre(1));
}

TEST(SimilarityIndex, FindsTheTemplateOfACopy) {
    SimilarityIndex index;
    for (unsigned seed = 0; seed < 100; ++seed)
        index.add(qrv::Sketching::of(randomBytes(10'000, seed)).value());
    for (unsigned seed = 0; seed < 100; ++seed) {
        const std::string copy = randomBytes(10'000, seed).insert(5000, randomBytes(2000, 9999));
        EXPECT_THAT(found(index, qrv::Sketching::of(copy).value(), 1), ElementsAre(seed));
    }
}

// Symptom: none yet. Cause to be kept away: with thousands of copies of one template, each search
// would look at all of them.
TEST(SimilarityIndex, LooksAtTheNewestAloneWhereManyAreAlike) {
    SimilarityIndex index;
    for (int number = 0; number < 5000; ++number)
        index.add(sketch(1, 12, 0));
    const std::vector<std::uint32_t> numbers = found(index, sketch(1, 12, 0), 10'000);
    EXPECT_EQ(numbers.size(), 32U);
    EXPECT_EQ(numbers.front(), 4999U);
}

}  // namespace
