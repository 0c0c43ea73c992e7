#include <engine/base/Digest.h>
#include <engine/worktree/BaselineBytes.h>
#include <tests/support/Effort.h>
#include <tests/support/Files.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

using qrv::Baseline;
using qrv::BaselineBuilder;
using qrv::Digest;
using qrv::fromBytes;
using qrv::HeadChange;
using qrv::KeptBaseline;
using qrv::KnownFile;
using qrv::toBytes;

const std::string heading = "qrv baseline 2\n";
const HeadChange last = {.sequence = 258, .mark = -1};

std::string whole(const std::string& body) {
    return heading + Digest::of(body) + body;
}

KnownFile noted(std::int64_t sizeBytes, const sys::FileStamp& stamp) {
    KnownFile file;
    file.sizeBytes = sizeBytes;
    file.note(stamp);
    return file;
}

Baseline someBaseline() {
    KnownFile unknown;
    unknown.sizeBytes = 1;
    BaselineBuilder builder;
    builder.add("a/1", noted(5, {.number = 300, .modifiedNs = 1000, .changedNs = 1001}));
    builder.add("a/2", unknown);
    builder.add("\xE4", noted(64, {.number = 299, .modifiedNs = 1000, .changedNs = 999}));
    return builder.build();
}

std::string number(unsigned char lowest) {
    return std::string(1, static_cast<char>(lowest)) + std::string(7, '\0');
}

std::string beginOf(unsigned char fileCount) {
    return std::string("\x02\x01\0\0\0\0\0\0", 8) + std::string(8, '\xFF') + number(fileCount);
}

/// The body of `someBaseline`, byte for byte.
std::string someBody() {
    return beginOf(3) +                                          //
           std::string("\0\3a/1\x0B\xD8\4\xD0\x0F\2", 12 - 1) +  //
           std::string("\2\1", 2) + "2\2" +                      //
           std::string("\0\1\xE4\x81\1\1\0\1", 8);
}

TEST(BaselineBytes, AreAHeadingADigestAndRowsOfDifferences) {
    EXPECT_EQ(toBytes(last, someBaseline()), whole(someBody()));
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
    EXPECT_EQ(shown(toBytes(last, someBaseline())),
              qrv_test::readFile(QRV_WORKTREE_SAMPLES "/baseline.sample"));
}

TEST(BaselineBytes, GiveBackWhatWasWritten) {
    const std::optional<KeptBaseline> kept = fromBytes(toBytes(last, someBaseline()));
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->last, last);
    const std::vector<KnownFile>& files = kept->baseline->files();
    ASSERT_EQ(files.size(), 3U);
    EXPECT_EQ(files[1].path, "a/2");
    EXPECT_FALSE(files[1].isNoted());
    EXPECT_EQ(files[2].path, "\xE4");
    EXPECT_EQ(files[2].sizeBytes, 64);
    EXPECT_EQ(files[2].number, 299U);
    EXPECT_EQ(files[2].modifiedNs, 1000);
    EXPECT_EQ(files[2].changedNs, 999);
    EXPECT_EQ(toBytes(kept->last, *kept->baseline), whole(someBody()));
}

TEST(BaselineBytes, HoldTheLargestNumbers) {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    BaselineBuilder builder;
    builder.add("a", noted(most, {.number = std::numeric_limits<std::uint64_t>::max(),
                                  .modifiedNs = -most,
                                  .changedNs = most}));
    builder.add("b", noted(0, {.number = 0, .modifiedNs = most, .changedNs = -most}));
    const std::optional<KeptBaseline> kept = fromBytes(toBytes(last, builder.build()));
    ASSERT_TRUE(kept);
    const std::vector<KnownFile>& files = kept->baseline->files();
    EXPECT_EQ(files[0].sizeBytes, most);
    EXPECT_EQ(files[0].number, std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(files[0].modifiedNs, -most);
    EXPECT_EQ(files[0].changedNs, most);
    EXPECT_EQ(files[1].modifiedNs, most);
    EXPECT_EQ(files[1].changedNs, -most);
}

// What comes first among texts is not always first among bytes.
TEST(BaselineBytes, HoldAPathThatIsTheBeginningOfTheOneBefore) {
    BaselineBuilder builder;
    builder.add("\xC3\xA4", KnownFile());
    builder.add("\xC3", KnownFile());
    const std::optional<KeptBaseline> kept = fromBytes(toBytes(last, builder.build()));
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->baseline->files()[1].path, "\xC3");
}

TEST(BaselineBytes, TellAtTheirBeginningWhatTheyAreOf) {
    const std::string bytes = toBytes(last, someBaseline());
    const auto begin = qrv::headingFrom(bytes.substr(0, qrv::baselineHeadingLength));
    ASSERT_TRUE(begin);
    EXPECT_EQ(begin->last, last);
    EXPECT_EQ(begin->fileCount, 3U);
    EXPECT_FALSE(qrv::headingFrom(bytes.substr(0, qrv::baselineHeadingLength - 1)));
}

TEST(BaselineBytes, AreNotReadWhenAnyBitIsFlippedOrAnyByteIsMissing) {
    const std::string bytes = toBytes(last, someBaseline());
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        std::string flipped = bytes;
        flipped[place] = static_cast<char>(flipped[place] ^ 1);
        EXPECT_FALSE(fromBytes(flipped)) << place;
        EXPECT_FALSE(fromBytes(bytes.substr(0, place))) << place;
    }
    EXPECT_FALSE(fromBytes(bytes + "x"));
    qrv_test::tellTried(bytes.size(), "flipped bytes");
    qrv_test::tellTried(bytes.size(), "damaged inputs");
}

// Whoever makes a right digest for it can write anything.
TEST(BaselineBytes, AreNotReadWhenTheBodyIsNotWhole) {
    const std::string body = someBody();
    for (std::size_t length = 0; length < body.size(); ++length)
        EXPECT_FALSE(fromBytes(whole(body.substr(0, length)))) << length;
    EXPECT_FALSE(fromBytes(whole(body + "x")));
    EXPECT_TRUE(fromBytes(whole(body)));
    qrv_test::tellTried(body.size(), "damaged inputs");
}

TEST(BaselineBytes, AreNotReadWhenTheyCouldHaveBeenWrittenInAnotherWay) {
    const auto isRead = [](unsigned char count, const std::string& rows) {
        return fromBytes(whole(beginOf(count) + rows)).has_value();
    };
    const std::string first("\0\2ab\0", 5);
    EXPECT_TRUE(isRead(1, first));
    // A number with more bytes than it needs, and one with more bits than there are.
    EXPECT_FALSE(isRead(1, std::string("\0\x82\0ab\0", 6)));
    EXPECT_FALSE(isRead(1, std::string("\0\2ab", 4) + std::string(9, '\xFF') + "\2"));
    EXPECT_FALSE(isRead(1, std::string("\0\2ab", 4) + std::string(10, '\xFF') + "\1"));
    // Shared: less than could be, more than there is, all of it; and out of order.
    EXPECT_TRUE(isRead(2, first + std::string("\1\1c\0", 4)));
    EXPECT_FALSE(isRead(2, first + std::string("\0\2ac\0", 5)));
    EXPECT_FALSE(isRead(2, first + std::string("\3\1c\0", 4)));
    EXPECT_FALSE(isRead(2, first + std::string("\2\0\0", 3)));
    EXPECT_FALSE(isRead(2, first + std::string("\1\1a\0", 4)));
    EXPECT_FALSE(isRead(2, first));
    EXPECT_FALSE(isRead(1, first + first));
}

// Few bytes can stand for long paths: each of these rows repeats most of the one before.
TEST(BaselineBytes, AreNotReadWhenTheirPathsTakeTooMuchMemory) {
    constexpr int firstNumber = 10000;
    const auto isReadWith = [](std::size_t length) {
        BaselineBuilder builder;
        for (int file = 0; file < 3000; ++file)
            builder.add(std::string(length, 'x') + std::to_string(firstNumber + file), {});
        return fromBytes(toBytes(last, builder.build())).has_value();
    };
    EXPECT_TRUE(isReadWith(300));
    EXPECT_FALSE(isReadWith(3000));
}

TEST(BaselineBytes, OfAnotherProgramAreKnownAsSuch) {
    EXPECT_TRUE(qrv::isOfOtherProgram("qrv baseline 1\n"));
    EXPECT_TRUE(qrv::isOfOtherProgram("qrv baseline 10\n"));
    EXPECT_FALSE(qrv::isOfOtherProgram("qrv baseline 2\n"));
    EXPECT_FALSE(qrv::isOfOtherProgram("qrv base"));
    EXPECT_FALSE(fromBytes("qrv baseline 1\n" + Digest::of(someBody()) + someBody()));
}

}  // namespace
