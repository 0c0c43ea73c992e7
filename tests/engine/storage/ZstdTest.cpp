#include <engine/storage/Zstd.h>
#include <tests/engine/storage/Contents.h>
#include <tests/support/Effort.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace std::string_literals;
using qrv::FrameDecoder;
using qrv::FrameWriter;
using qrv_test::randomBytes;

std::string compressed(std::string_view contents, std::string_view base = {}) {
    return std::string(qrv::compressFrame(contents, base).value().view());
}

// The contents, or the error behind "error: ", or "endless" for a frame that does not come to its
// end.
std::string decoded(std::string_view frame, std::int64_t sizeBytes, std::string_view base = {},
                    std::size_t atOnce = std::string::npos) {
    FrameDecoder decoder(sizeBytes, base);
    std::string contents(static_cast<std::size_t>(sizeBytes), '\0');
    std::size_t written = 0;
    for (;;) {
        const std::span<char> room = std::span<char>(contents).subspan(written);
        const Expected<FrameDecoder::Step> step =
            decoder.step(frame, room.first(std::min(room.size(), atOnce)));
        if (!step)
            return "error: " + step.error().message.toNarrow();
        frame.remove_prefix(step->read);
        written += step->written;
        if (step->isEnd)
            return contents.substr(0, written);
        if (step->read == 0 && step->written == 0)
            return "endless";
    }
}

std::vector<std::string> streamed(const std::string& contents, std::int64_t pieceBytes,
                                  std::size_t addedAtOnce) {
    std::vector<std::string> pieces;
    FrameWriter writer(
        static_cast<std::int64_t>(contents.size()), pieceBytes,
        [&](std::span<const char> piece) { pieces.emplace_back(piece.begin(), piece.end()); });
    for (std::size_t at = 0; at < contents.size(); at += addedAtOnce)
        writer.add(std::string_view(contents).substr(at, addedAtOnce)).value();
    writer.finish().value();
    return pieces;
}

TEST(Zstd, SavesMoreWithMoreEffort) {
    std::string contents;
    for (int number = 0; number < 20000; ++number)
        contents += "line " + std::to_string(number * 7919 % 10007) + " of the list\n";
    const auto bytes = [&](qrv::Effort effort) {
        const std::string frame(qrv::compressFrame(contents, {}, effort)->view());
        EXPECT_TRUE(decoded(frame, std::ssize(contents)) == contents);
        return frame.size();
    };
    EXPECT_LT(bytes(qrv::Effort::thorough), bytes(qrv::Effort::quick));
}

TEST(Zstd, GivesBackContentsOfAnyLength) {
    for (const std::size_t size : {0, 1, 255, 256, 1023, 1024, 1025, 131072, 131073, 1000000}) {
        const std::string contents = randomBytes(size, 1);
        EXPECT_TRUE(decoded(compressed(contents), static_cast<std::int64_t>(size)) == contents)
            << size;
    }
}

TEST(Zstd, ADifferenceIsSmallAndNeedsItsBase) {
    const std::string base = randomBytes(1000000, 1);
    std::string contents = base;
    contents.insert(500000, "a few bytes more");

    const std::string frame = compressed(contents, base);

    EXPECT_LT(frame.size(), 200);
    EXPECT_TRUE(decoded(frame, 1000016, base) == contents);
    EXPECT_FALSE(decoded(frame, 1000016, randomBytes(1000000, 2)) == contents);
    EXPECT_EQ(decoded(frame, 1000016), "error: Data corruption detected");
}

TEST(Zstd, ADifferenceFindsWhatIsFarAway) {
    const std::string moved = randomBytes(100000, 1);
    const std::string base = moved + randomBytes(20000000, 2);
    const std::string contents = randomBytes(20000000, 2) + moved;

    EXPECT_LT(compressed(contents, base).size(), 10000);
}

TEST(Zstd, AStreamComesInPiecesOfTheAskedLength) {
    const std::string contents = randomBytes(5000, 1);

    const std::vector<std::string> pieces = streamed(contents, 1000, 77);

    ASSERT_EQ(pieces.size(), 6);
    std::string frame;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        EXPECT_TRUE(i == 5 || pieces[i].size() == 1000) << i;
        frame += pieces[i];
    }
    EXPECT_TRUE(decoded(frame, 5000) == contents);
}

TEST(Zstd, AStreamOfNothingIsAFrameToo) {
    const std::vector<std::string> pieces = streamed("", 1000, 1);

    ASSERT_EQ(pieces.size(), 1);
    EXPECT_EQ(decoded(pieces[0], 0), "");
}

TEST(Zstd, AStreamThatIsShorterOrLongerThanSaidFails) {
    const auto ignore = [](std::span<const char>) {};
    FrameWriter shorter(3, 1000, ignore);
    ASSERT_TRUE(shorter.add("ab"s));
    EXPECT_EQ(shorter.finish().error().message,
              OdString("The contents cannot be compressed: Src size is incorrect"));

    FrameWriter longer(3, 1000, ignore);
    EXPECT_FALSE(longer.add("abcd"s) && longer.finish());
}

TEST(Zstd, RefusesContentsOfAnotherSizeThanSaid) {
    const std::string frame = compressed(randomBytes(1000, 1));

    EXPECT_EQ(decoded(frame, 999), "error: the size in its frame is another one");
    EXPECT_EQ(decoded(frame, 1001), "error: the size in its frame is another one");
    EXPECT_EQ(decoded(frame, std::int64_t{1} << 20), "error: the size in its frame is another one");
}

// A frame of 300 stored bytes whose window has the given descriptor: the upper five bits are its
// logarithm less ten.
std::string frameWithWindow(int descriptor) {
    return "\x28\xB5\x2F\xFD\x40"s + static_cast<char>(descriptor) + "\x2C\x00\x61\x09\x00"s +
           std::string(300, 'x');
}

TEST(Zstd, RefusesAWindowLargerThanTheContentsNeed) {
    // In steps, because a window is not needed for what fits into one.
    EXPECT_EQ(decoded(frameWithWindow(0), 300, {}, 100), std::string(300, 'x'));
    // The next larger one, and 1 GiB.
    for (const int descriptor : {0x08, 0xA0})
        EXPECT_EQ(decoded(frameWithWindow(descriptor), 300, {}, 100),
                  "error: Frame requires too much memory for decoding")
            << descriptor;
    EXPECT_EQ(decoded(frameWithWindow(0xFF), 300, {}, 100), "error: it is no frame");
}

TEST(Zstd, AFrameThatWasCutOffNeverEnds) {
    const std::string contents = randomBytes(300, 1) + std::string(300, 'a');
    const std::string frame = compressed(contents);

    for (std::size_t length = 0; length < frame.size(); ++length) {
        const std::string answer = decoded(frame.substr(0, length), 600);
        EXPECT_TRUE(answer == "endless" || answer.starts_with("error: ")) << length << answer;
    }
    qrv_test::tellTried(frame.size(), "damaged inputs");
}

TEST(Zstd, SurvivesAnyChangedByte) {
    const std::string base = randomBytes(3000, 1);
    const std::string contents = base.substr(1000) + "The flange is 12 mm thick. The bolt is not.";
    const std::string frame = compressed(contents, base);

    int changedContents = 0;
    for (std::size_t at = 0; at < frame.size(); ++at) {
        for (int bit = 0; bit < 8; ++bit) {
            std::string changed = frame;
            changed[at] = static_cast<char>(changed[at] ^ (1 << bit));
            const auto size = static_cast<std::int64_t>(contents.size());
            changedContents += decoded(changed, size, base) != contents ? 1 : 0;
        }
    }
    // Few bits of a frame say nothing about the contents.
    EXPECT_GT(changedContents, static_cast<int>(frame.size()) * 8 - 30);
    qrv_test::tellTried(frame.size() * 8, "damaged inputs");
}

}  // namespace
