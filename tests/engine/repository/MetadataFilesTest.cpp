#include <engine/base/Digest.h>
#include <engine/repository/MetadataFiles.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;

class MetadataFiles : public testing::Test {
protected:
    qrv::MetadataFiles listed() const { return qrv::listMetadata(root, opened()).value(); }
    std::string complaint() const {
        const Expected<qrv::MetadataFiles> files = qrv::listMetadata(root, opened());
        return files ? "none" : files.error().message.toNarrow();
    }
    sys::Folder opened() const { return *sys::Folder::open(folder.path().string()); }
    static std::vector<std::string> names(const std::vector<qrv::MetadataFile>& files) {
        std::vector<std::string> names;
        for (const qrv::MetadataFile& file : files)
            names.push_back(file.name.toNarrow());
        return names;
    }

    const qrv_test::TemporaryFolder folder;
    const common::RootPath root = common::RootPath::get(folder.text(), true).value();
    const fs::path metadata = folder / ".qrv";
    const std::string digest = qrv::Digest::of("contents");
};

TEST_F(MetadataFiles, AreNoneWhereNothingWasStored) {
    const qrv::MetadataFiles files = listed();
    EXPECT_THAT(files.objects, IsEmpty());
    EXPECT_THAT(files.stores, IsEmpty());
    EXPECT_THAT(files.leftovers, IsEmpty());
    EXPECT_THAT(files.strays, IsEmpty());
}

TEST_F(MetadataFiles, AreToldApartByTheirNames) {
    writeFile(metadata / "objects" / digest, "contents");
    writeFile(metadata / "objects" / digest.substr(1), "");
    writeFile(metadata / "objects/.object.1.qrv-tmp", "");
    fs::create_directories(metadata / "objects" / std::string(64, 'a'));
    writeFile(metadata / "tf/plan.tf", "store");
    writeFile(metadata / "tf/plan.tf-journal", "");
    writeFile(metadata / "tf/other.tf-journal", "");
    writeFile(metadata / "tf/a b.tf", "");
    writeFile(metadata / "commits/.x.qrv-tmp", "");
    writeFile(metadata / "notes", "of nobody's concern");

    const qrv::MetadataFiles files = listed();

    EXPECT_THAT(names(files.objects), ElementsAre(digest));
    EXPECT_EQ(files.objects.front().sizeBytes, 8);
    EXPECT_THAT(names(files.stores), ElementsAre("plan"));
    EXPECT_THAT(names(files.leftovers),
                ElementsAre(".qrv/commits/.x.qrv-tmp", ".qrv/objects/.object.1.qrv-tmp"));
    EXPECT_THAT(files.strays,
                ElementsAre(OdString::fromNarrow(".qrv/objects/" + digest.substr(1)),
                            OdString::fromNarrow(".qrv/objects/" + std::string(64, 'a')),
                            OdString(L".qrv/tf/a b.tf"), OdString(L".qrv/tf/other.tf-journal")));
}

TEST_F(MetadataFiles, AreNotSoughtBehindALink) {
    fs::create_directories(folder / "elsewhere");
    fs::create_directories(metadata);
    fs::create_symlink(folder / "elsewhere", metadata / "objects");
    EXPECT_EQ(complaint(),
              "The folder '" + folder.text().toNarrow() +
                  "/.qrv/objects' cannot be opened: Too many levels of symbolic links");
}

TEST_F(MetadataFiles, AreFoundAmongTheWorkingFilesToo) {
    writeFile(folder / ".plan.dwg.1.qrv-tmp", "half");
    writeFile(folder / "plan.dwg", "whole");
    const auto leftovers = qrv::leftoversIn(root, opened(), L".");
    EXPECT_THAT(names(leftovers), ElementsAre(".plan.dwg.1.qrv-tmp"));
    EXPECT_THAT(qrv::leftoversIn(root, opened(), L"missing"), IsEmpty());
}

}  // namespace
