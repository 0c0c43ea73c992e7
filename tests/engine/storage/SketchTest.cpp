#include <engine/storage/Sketch.h>
#include <tests/engine/storage/Contents.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

using qrv::Sketch;
using qrv::Sketching;
using qrv_test::randomBytes;

Sketch sketchOf(std::string_view contents) {
    return Sketching::of(contents).value();
}

TEST(Sketch, OfTheSameBytesIsTheSameHoweverTheyCome) {
    const std::string contents = randomBytes(70'000, 1);
    for (const std::size_t atOnce : {1, 7, 4096, 65536}) {
        Sketching sketching;
        for (std::size_t at = 0; at < contents.size(); at += atOnce)
            sketching.add(std::string_view(contents).substr(at, atOnce));
        EXPECT_EQ(sketching.finish(), Sketching::of(contents)) << atOnce;
    }
}

TEST(Sketch, OfContentsWithAFewEditsAgreesInMostFeatures) {
    const std::string contents = randomBytes(40'000, 1);
    for (unsigned seed = 2; seed < 22; ++seed) {
        std::string edited = contents;
        for (unsigned edit = 0; edit < 5; ++edit)
            edited.replace((seed * 1777 + edit * 7919) % 39'000, 60, randomBytes(60, seed + edit));
        EXPECT_GE(agreement(sketchOf(contents), sketchOf(edited)), 8U) << seed;
    }
}

TEST(Sketch, DoesNotMindThatEverythingMoves) {
    const std::string contents = randomBytes(40'000, 1);
    for (const std::size_t count : {1, 3, 100, 2000}) {
        const std::string moved = randomBytes(count, 2) + contents;
        EXPECT_GE(agreement(sketchOf(contents), sketchOf(moved)), 8U) << count;
        EXPECT_GE(agreement(sketchOf(contents), sketchOf(contents.substr(count))), 8U) << count;
    }
}

TEST(Sketch, DoesNotMindTheOrderOfTheParts) {
    const std::string one = randomBytes(20'000, 1);
    const std::string other = randomBytes(20'000, 2);
    EXPECT_GE(agreement(sketchOf(one + other), sketchOf(other + one)), 10U);
}

TEST(Sketch, AgreesInAboutAsManyFeaturesAsTheContentsShare) {
    std::size_t agreeing = 0;
    for (unsigned seed = 1; seed <= 50; ++seed) {
        const std::string common = randomBytes(20'000, seed);
        // 20,000 bytes of 60,000 in all are in both.
        agreeing += agreement(sketchOf(common + randomBytes(20'000, 100 + seed)),
                              sketchOf(common + randomBytes(20'000, 200 + seed)));
    }
    EXPECT_NEAR(static_cast<double>(agreeing) / 50, 12.0 / 3, 0.8);
}

TEST(Sketch, OfUnrelatedContentsAgreesInNothing) {
    std::size_t agreeing = 0;
    for (unsigned seed = 1; seed <= 100; ++seed)
        agreeing +=
            agreement(sketchOf(randomBytes(5000, seed)), sketchOf(randomBytes(5000, 1000 + seed)));
    EXPECT_LE(agreeing, 1U);
}

TEST(Sketch, IsMadeOfContentsThatHaveEnoughToTell) {
    EXPECT_EQ(Sketching::of(randomBytes(qrv::shortestSketchedBytes - 1, 1)), std::nullopt);
    EXPECT_NE(Sketching::of(randomBytes(qrv::shortestSketchedBytes, 1)), std::nullopt);
    EXPECT_EQ(Sketching::of(std::string(100'000, '\0')), std::nullopt);
    EXPECT_EQ(Sketching::of(std::string(100'000, 'x')), std::nullopt);
    EXPECT_EQ(Sketching::of(""), std::nullopt);
}

// Symptom: none, but whoever fills a file with one value again and again must not make storing it
// slow. Cause: a value that is sampled would be sampled at each place.
TEST(Sketch, TakesOneSampleOfOneValueOverAndOver) {
    const std::string varied = randomBytes(40'000, 1);
    for (int byte = 0; byte < 256; byte += 5) {
        const std::string same(100'000, static_cast<char>(byte));
        EXPECT_EQ(Sketching::of(same), std::nullopt) << byte;
        EXPECT_GE(agreement(sketchOf(varied), sketchOf(varied + same)), 10U) << byte;
    }
}

TEST(Sketch, ComesBackFromItsBytes) {
    const Sketch sketch = sketchOf(randomBytes(5000, 3));
    EXPECT_EQ(qrv::sketchOf(bytesOf(sketch)), sketch);
    EXPECT_EQ(bytesOf(Sketch{.features = {0x0102, 0xFFFE}}),
              (std::array<char, 24>{0x02, 0x01, '\xFE', '\xFF'}));
}

// Sketches of different programs are compared, so none may make another one of the same contents.
TEST(Sketch, IsThatOfTheSample) {
    std::string contents;
    for (int line = 1; line <= 1000; ++line)
        contents += "line " + std::to_string(line) + "\n";
    std::string text;
    for (const std::uint16_t feature : sketchOf(contents).features) {
        char digits[8];
        std::snprintf(digits, sizeof digits, "%04x\n", static_cast<unsigned>(feature));
        text += digits;
    }
    EXPECT_EQ(text, qrv_test::readFile(std::filesystem::path(QRV_FRAME_SAMPLES) / "sketch.sample"));
}

}  // namespace
