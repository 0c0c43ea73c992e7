#include <tests/engine/maintenance/CollectionFolder.h>
#include <tests/engine/storage/Contents.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::CollectionFolder;
using testing::IsEmpty;
using testing::SizeIs;

/// Versions of two files that are kept as differences, each in a commit of its own.
class CollectionOfVersions : public CollectionFolder {
protected:
    CollectionOfVersions() {
        for (int number = 0; number < count; ++number) {
            project.write({{"list.csv", listOf(number)}, {"roof.dwg", drawingOf(number)}});
            project.commit(std::to_string(number));
        }
    }

    static std::string drawingOf(int number) {
        return qrv_test::revision(static_cast<unsigned>(number), 9000);
    }
    static std::string listOf(int number) {
        std::string list;
        for (int line = 0; line < 800; ++line)
            list += "flange;" + std::to_string(line % 97 == number ? -line : line) + "\n";
        return list;
    }
    void expectEveryVersion() const {
        expectWhole();
        for (int number = 0; number < count; ++number) {
            const std::string commit = std::to_string(3 + number);
            EXPECT_EQ(project.qrv({"show", commit + ":list.csv"}).output, listOf(number));
            EXPECT_EQ(project.qrv({"show", commit + ":roof.dwg"}).output, drawingOf(number));
        }
    }

    static constexpr int count = 6;
};

// Old packs kept a version against the one before, new ones against the one behind: read through
// both, chains ended in a circle. The collection gave up, and what it had written made everything
// pass for damaged.
TEST_F(CollectionOfVersions, TurnsTheirChainsRound) {
    EXPECT_THAT(collect().problems, IsEmpty());
    EXPECT_THAT(packs(), SizeIs(1));
    expectEveryVersion();
}

TEST_F(CollectionOfVersions, LosesNothingWhicheverOldPacksAKilledOneLeft) {
    const fs::path before = project.folder.path() / "before";
    fs::copy(project / ".qrv/packs", before);
    collect();
    const std::vector<fs::path> old = filesIn(before);
    ASSERT_GE(old.size(), 6U);
    for (std::size_t step = 1; step <= 3; ++step) {
        for (std::size_t place = 0; place < old.size(); place += step)
            fs::copy_file(old[place], project / ".qrv/packs" / old[place].filename(),
                          fs::copy_options::skip_existing);
        expectEveryVersion();
        EXPECT_THAT(collect().problems, IsEmpty());
        EXPECT_THAT(packs(), SizeIs(1)) << step;
        expectEveryVersion();
    }
}

}  // namespace
