#include <engine/base/Digest.h>
#include <engine/worktree/BaselineBytes.h>
#include <tests/support/Effort.h>
#include <tests/support/Files.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <iomanip>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

using common::FileChange;
using qrv::Baseline;
using qrv::Digest;
using qrv::fromBytes;
using qrv::isOfLaterProgram;
using qrv::KeptBaseline;
using qrv::toBytes;

const std::string heading = "qrv baseline 1\n";

std::string number(unsigned char lowest) {
    return std::string(1, static_cast<char>(lowest)) + std::string(7, '\0');
}

std::string text(const std::string& bytes) {
    return number(static_cast<unsigned char>(bytes.size())) + bytes;
}

std::string whole(const std::string& body) {
    return heading + Digest::of(body) + body;
}

std::optional<KeptBaseline> read(const std::string& bytes) {
    return fromBytes({bytes.begin(), bytes.end()});
}

KeptBaseline someBaseline() {
    KeptBaseline kept;
    kept.stateFile = {.number = 258, .sizeBytes = 3, .modifiedNs = 4, .changedNs = -1};
    kept.headCommit = L"c0ffee";
    kept.state.head.reference = OdString::fromNarrow(
        "gr\xC3\xB6\xC3\x9F"
        "er");
    kept.state.stagedFiles.emplace_back(L"b", FileChange::added);
    kept.state.stagedFiles.emplace_back(L"a", FileChange::removed);
    kept.state.renames = {{L"b", L"a"}, {L"c", L"d"}};
    kept.baseline = std::make_shared<const Baseline>(
        Baseline::of({{L"a", 5}, {OdString::fromNarrow("\xE4"), 6}},
                     {{L"a", {7, false}}, {OdString::fromNarrow("\xE4"), {8, true}}}, 0));
    return kept;
}

/// The body of the same, byte for byte.
std::string someBody() {
    const std::string never = std::string(7, '\0') + "\x80";
    return std::string("\x02\x01\0\0\0\0\0\0", 8) + number(3) + number(4) + std::string(8, '\xFF') +
           text("c0ffee") +
           text(
               "gr\xC3\xB6\xC3\x9F"
               "er") +  //
           number(2) +
           number(0) + text("b") + number(2) + text("a") +              //
           number(2) + text("b") + text("a") + text("c") + text("d") +  //
           number(2) + number(5) + number(7) + never + text("a") + number(6) + never + number(8) +
           text("\xE4");
}

TEST(BaselineBytes, AreAHeadingADigestAndNumbersAndTexts) {
    EXPECT_EQ(toBytes(someBaseline()), whole(someBody()));
}

/// Sixteen bytes a line: where they begin, their values, and what of them is a character.
std::string shown(const std::string& bytes) {
    constexpr std::size_t width = 16;
    std::ostringstream text;
    for (std::size_t begin = 0; begin < bytes.size(); begin += width) {
        const std::string row = bytes.substr(begin, width);
        text << std::hex << std::setfill('0') << std::setw(4) << begin << ' ';
        std::string characters;
        for (const char byte : row) {
            text << ' ' << std::setw(2) << static_cast<int>(static_cast<unsigned char>(byte));
            characters += byte > ' ' && byte < 127 ? byte : '.';
        }
        text << std::string(3 * (width - row.size()), ' ') << "  " << characters << '\n';
    }
    return text.str();
}

TEST(BaselineBytes, AreThoseOfTheSample) {
    EXPECT_EQ(shown(toBytes(someBaseline())),
              qrv_test::readFile(QRV_WORKTREE_SAMPLES "/baseline.sample"));
}

TEST(BaselineBytes, GiveBackWhatWasWritten) {
    const std::optional<KeptBaseline> kept = read(toBytes(someBaseline()));
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->stateFile, someBaseline().stateFile);
    EXPECT_EQ(kept->headCommit, someBaseline().headCommit);
    EXPECT_EQ(kept->state, someBaseline().state);
    ASSERT_EQ(kept->baseline->files().size(), 2U);
    EXPECT_EQ(kept->baseline->files()[1].path, "\xE4");
    EXPECT_EQ(kept->baseline->files()[1].sizeBytes, 6);
    EXPECT_EQ(kept->baseline->files()[0].unmodifiedTicks, 7);
    EXPECT_EQ(toBytes(*kept), toBytes(someBaseline()));
}

TEST(BaselineBytes, AreNotReadWhenAnyBitIsFlippedOrAnyByteIsMissing) {
    const std::string bytes = toBytes(someBaseline());
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        std::string flipped = bytes;
        flipped[place] = static_cast<char>(flipped[place] ^ 1);
        EXPECT_FALSE(read(flipped)) << place;
        EXPECT_FALSE(read(bytes.substr(0, place))) << place;
    }
    EXPECT_FALSE(read(bytes + "x"));
    qrv_test::tellTried(bytes.size(), "flipped bytes");
    qrv_test::tellTried(bytes.size(), "damaged inputs");
}

// Whoever makes a right digest for it can write anything.
TEST(BaselineBytes, AreNotReadWhenTheBodyIsNotWhole) {
    const std::string body = someBody();
    for (std::size_t length = 0; length < body.size(); ++length)
        EXPECT_FALSE(read(whole(body.substr(0, length)))) << length;
    EXPECT_FALSE(read(whole(body + "x")));
    EXPECT_TRUE(read(whole(body)));
    qrv_test::tellTried(body.size(), "damaged inputs");
}

TEST(BaselineBytes, AreNotReadWhenCountsOrNumbersCannotBe) {
    const std::string begin(4 * 8, '\0');
    const std::string many(8, '\xFF');
    const std::string none = number(0);
    const std::string names = text("") + text("master");
    EXPECT_TRUE(read(whole(begin + names + none + none + none)));
    EXPECT_FALSE(read(whole(begin + names + many + none + none)));
    EXPECT_FALSE(read(whole(begin + names + none + many + none)));
    EXPECT_FALSE(read(whole(begin + names + none + none + many)));
    EXPECT_FALSE(read(whole(begin + many)));
    const auto staged = [&](unsigned char change) {
        return whole(begin + names + number(1) + number(change) + text("a") + none + none);
    };
    EXPECT_TRUE(read(staged(3)));
    EXPECT_FALSE(read(staged(4)));
    const auto renamed = [&](const std::string& one, const std::string& other) {
        return whole(begin + names + none + number(2) + text(one) + text("x") + text(other) +
                     text("y") + none);
    };
    EXPECT_TRUE(read(renamed("a", "b")));
    EXPECT_FALSE(read(renamed("b", "a")));
    EXPECT_FALSE(read(renamed("a", "a")));
}

TEST(BaselineBytes, OfALaterProgramAreKnownAsSuch) {
    EXPECT_TRUE(isOfLaterProgram("qrv baseline 2\n"));
    EXPECT_TRUE(isOfLaterProgram("qrv baseline 10\n"));
    EXPECT_FALSE(isOfLaterProgram("qrv baseline 1\n"));
    EXPECT_FALSE(isOfLaterProgram("qrv base"));
    EXPECT_FALSE(read("qrv baseline 2\n" + Digest::of(someBody()) + someBody()));
}

}  // namespace
