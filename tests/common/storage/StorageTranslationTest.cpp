#include <common/storage/StorageUrl.h>
#include <tests/support/Catalogue.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

namespace {

TEST(StorageTranslation, CoversTheMessages) {
    const qrv_test::GermanHost host({
        {"Internal error, invalid url occurred: %ls", "falsche Adresse %ls"},
        {"invalid url: %ls", "nirgends: %ls"},
    });
    ASSERT_TRUE(host.isLoaded());
    const qrv_test::TemporaryFolder folder;
    const common::RootPath root = common::RootPath::get(folder.text(), true).value();
    EXPECT_EQ(common::getRevision(L"x").error().message, L"falsche Adresse x");
    EXPECT_EQ(common::getRevision(L"tf:x").error().message, L"falsche Adresse tf:x");
    EXPECT_EQ(common::getStoragePath(root, L"x").error().message, L"nirgends: x");
    EXPECT_EQ(common::getStoragePath(root, L"tf:x").error().message, L"nirgends: tf:x");
}

}  // namespace
