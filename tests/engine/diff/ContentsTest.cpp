#include <engine/base/Digest.h>
#include <engine/diff/Contents.h>
#include <engine/journal/OpenTree.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

namespace {

using namespace std::string_literals;
using qrv::readText;
using qrv::TreeFile;
using qrv::WorkingTree;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

std::unique_ptr<WorkingTree> open(const TemporaryFolder& folder) {
    writeFile(folder / ".qrv/qrv.state", R"({"head": {"reference": "master"}})");
    return qrv::openTree(folder.path(), qrv::Repository::Use::change, qrv_test::anyCaller())
        .value();
}

struct Office {
    TemporaryFolder folder;
    common::RootPath root = common::RootPath::get(folder.text(), true).value();
    std::unique_ptr<WorkingTree> workingTree = open(folder);

    /// Writes the working file and gives its version.
    TreeFile working(const std::string& name, const std::string& bytes) const {
        writeFile(folder / name, bytes);
        return {{}, static_cast<std::int64_t>(bytes.size())};
    }
    /// Stores the contents and gives their version.
    TreeFile stored(const std::string& name, const std::string& bytes) const {
        TreeFile version = working(name, bytes);
        const OdString path = OdString::fromNarrow(name);
        version.contents =
            workingTree->repository().storages().ofFile(path).store(root, path).value();
        EXPECT_TRUE(workingTree->repository().storages().flush(root));
        return version;
    }
    Expected<std::optional<std::string>> read(const wchar_t* path, const TreeFile& version) const {
        return readText(*workingTree, path, version);
    }
};

TEST(ReadText, GivesTheContentsOfAText) {
    const Office office;
    const std::string text = "Übergabe\r\nMai";
    EXPECT_EQ(office.read(L"a.txt", office.working("a.txt", text)).value(), text);
    EXPECT_EQ(office.read(L"gone.txt", office.stored("b.txt", text)).value(), text);
    EXPECT_EQ(office.read(L"c", office.stored("c", "")).value(), "");
}

TEST(ReadText, GivesNothingForOtherContents) {
    const Office office;
    for (const std::string& bytes : {"a\0b"s, "\0"s}) {
        EXPECT_EQ(office.read(L"a", office.working("a", bytes)).value(), std::nullopt);
        EXPECT_EQ(office.read(L"b", office.stored("b", bytes)).value(), std::nullopt);
    }
}

TEST(ReadText, GivesNothingForADrawing) {
    const Office office;
    EXPECT_EQ(office.read(L"a.dwg", office.working("a.dwg", "text")).value(), std::nullopt);
    EXPECT_EQ(office.read(L"b.dwg", office.stored("b.dwg", "text")).value(), std::nullopt);
}

TEST(ReadText, GivesNothingAboveTenMegabytes) {
    const Office office;
    const std::string largest(10'000'000, 'a');
    EXPECT_EQ(office.read(L"a", office.working("a", largest)).value(), largest);
    EXPECT_EQ(office.read(L"a", office.working("a", largest + 'a')).value(), std::nullopt);
    // It may have grown since its size was asked for.
    EXPECT_EQ(office.read(L"a", {{}, 5}).value(), std::nullopt);
}

TEST(ReadText, FailsWhenTheFileCannotBeRead) {
    const Office office;
    const auto gone = office.read(L"gone", {{}, 5});
    ASSERT_FALSE(gone);
    EXPECT_EQ(gone.error().message,
              OdString::format(L"'gone' cannot be read: %ls",
                               OdString(std::generic_category().message(ENOENT).c_str())));
}

TEST(ReadText, FailsWhenTheStoredVersionIsNotThereOrDamaged) {
    const Office office;
    TreeFile version = office.working("a", "contents");
    version.contents = L"po:" + OdString::fromNarrow(qrv::Digest::of("contents"));
    const auto object = office.folder / (".qrv/objects/" + version.contents.toNarrow().substr(3));
    writeFile(object, "CONTENTS");
    const auto damaged = office.read(L"a", version);
    ASSERT_FALSE(damaged);
    EXPECT_EQ(damaged.error().message, L"The stored version '" + version.contents +
                                           L"' is damaged: its contents have another digest");
    std::filesystem::remove(object);
    const auto missing = office.read(L"a", version);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().message,
              L"The stored version '" + version.contents + L"' is not in the repository");
}

}  // namespace
