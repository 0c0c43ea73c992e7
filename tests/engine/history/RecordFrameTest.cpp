#include <engine/history/CommitRecord.h>
#include <engine/history/HistoryRecords.h>
#include <engine/history/RecordFrameInternal.h>
#include <engine/paths/Layout.h>
#include <tests/engine/history/Repository.h>
#include <tests/support/Files.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace {

using qrv::recordIn;
using qrv_test::file;

std::string frameOf(const std::string& record) {
    std::string bytes;
    qrv::RecordFrame frame(
        [&bytes](std::span<const char> piece) { bytes.append(piece.data(), piece.size()); });
    for (std::size_t begin = 0; begin < record.size(); begin += 1000)
        frame.add(std::string_view(record).substr(begin, 1000));
    frame.finish();
    return bytes;
}

std::vector<qrv::FileDelta> files(int count) {
    std::vector<qrv::FileDelta> deltas;
    deltas.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        deltas.push_back(file(std::to_string(i).c_str(), '1'));
    return deltas;
}

constexpr std::size_t plenty = 1 << 20;

TEST(RecordFrame, GivesBackTheRecord) {
    for (const std::size_t size : std::initializer_list<std::size_t>{0, 1, 999, 300000}) {
        std::string record;
        for (std::size_t index = 0; index < size; ++index)
            record += static_cast<char>('a' + index * index % 23);
        EXPECT_EQ(recordIn(frameOf(record), plenty).value(), record) << size;
    }
    EXPECT_EQ(recordIn("{}", plenty).value(), "{}") << "which is no frame";
}

TEST(RecordFrame, OfMoreThanIsTakenIsRefused) {
    const std::string frame = frameOf(std::string(plenty, ' '));
    EXPECT_LT(frame.size(), 200U);
    EXPECT_TRUE(recordIn(frame, plenty));
    EXPECT_FALSE(recordIn(frame, plenty - 1));
}

TEST(RecordFrame, ThatIsDamagedIsRefusedOrAnother) {
    const std::string record(2000, 'r');
    const std::string frame = frameOf(record);
    for (std::size_t length = 4; length < frame.size(); ++length)
        EXPECT_FALSE(recordIn(frame.substr(0, length), plenty)) << length;
    EXPECT_FALSE(recordIn(frame + "x", plenty));
    for (std::size_t place = 4; place < frame.size() * 8; ++place) {
        std::string flipped = frame;
        flipped[place / 8] = static_cast<char>(flipped[place / 8] ^ (1 << place % 8));
        const Expected<std::string> read = recordIn(flipped, plenty);
        EXPECT_TRUE(!read || read->size() <= plenty) << place;
    }
}

/// A repository with one recorded commit of so many files.
struct Recorded : qrv_test::Repository {
    explicit Recorded(int count) : hash(add({}, "one", files(count))) {
        qrv::ReferenceRecord record = qrv::ReferenceRecord::read(top).value();
        EXPECT_TRUE(updateRecords(record, 1, "test", history, top));
    }
    std::string path() const { return (folder / qrv::layout::commitRecordPath(hash)).string(); }
    std::string bytes() const { return qrv_test::readFile(path()); }

    const sys::Folder top = *sys::Folder::open(folder.path().string());
    const OdString hash;
};

TEST(CommitRecord, OfManyFilesIsCompressed) {
    for (const int count : {15, 16, 3000}) {
        const Recorded recorded(count);
        EXPECT_EQ(qrv::isRecordFrame(recorded.bytes()), count >= 16);
        const Expected<qrv::NewCommit> commit = qrv::recordedCommit(recorded.hash, recorded.top);
        ASSERT_TRUE(commit);
        EXPECT_EQ(hashOf(*commit), recorded.hash);
        EXPECT_LT(recorded.bytes().size(), recordOf(*commit).size() + 1);
    }
}

TEST(CommitRecord, ThatIsCompressedAndDamagedIsRefused) {
    const Recorded recorded(20);
    const std::string bytes = recorded.bytes();
    for (std::size_t place = 0; place < bytes.size(); place += 7) {
        std::string flipped = bytes;
        flipped[place] = static_cast<char>(~flipped[place]);
        qrv_test::writeFile(recorded.path(), flipped);
        EXPECT_FALSE(qrv::recordedCommit(recorded.hash, recorded.top)) << place;
    }
}

}  // namespace
