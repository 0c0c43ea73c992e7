#include <engine/storage/WorkingFileReader.h>
#include <tests/engine/storage/Contents.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using qrv_test::readAll;
using qrv_test::writeFile;

TEST(WorkingFileReader, FailsAtTheEndWhenTheFileHasChanged) {
    const qrv_test::TemporaryFolder folder;
    const sys::Outcome<sys::Folder> root = sys::Folder::open(folder.path().string());
    const qrv::RelativePath path = qrv::RelativePath::check(L"plan.dwg").value();
    struct Case {
        const char* now;
        bool isChanged;
    };
    for (const Case& each : {Case{"0123456789", false}, Case{"0123456789more", true},
                             Case{"0123", true}, Case{"01234", true}}) {
        writeFile(folder / "plan.dwg", "0123456789");
        const std::unique_ptr<qrv::WorkingFileReader> file =
            qrv::WorkingFileReader::open(*root, path).value();
        EXPECT_EQ(file->sizeBytes(), 10);
        std::string buffer(5, '\0');
        ASSERT_EQ(file->read(buffer).value(), 5);
        if (each.isChanged)
            writeFile(folder / "plan.dwg", each.now);

        const std::string rest = readAll(*file);

        EXPECT_EQ(rest, each.isChanged
                            ? "error: 'plan.dwg' cannot be stored: it changes while it is read"
                            : "56789");
        EXPECT_EQ(file->hasChanged(), each.isChanged) << each.now;
    }
}

}  // namespace
