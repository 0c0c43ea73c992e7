#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <examples/host/ObjectStorage.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using common::RootPath;
using qrv_test::readFile;
using qrv_test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string contents("0\0\xFF\r\nEOF\n", 9);
// Of "abc", the standard's own example.
const std::string abcDigest = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

OdString urlOf(const std::string& digest) {
    return OdString::fromNarrow("po:" + digest);
}

class ObjectStorageTest : public testing::Test {
protected:
    OdString stored(const std::string& path, const std::string& bytes) {
        writeFile(folder_ / path, bytes);
        return storage_.store(root_, OdString::fromNarrow(path)).value();
    }

    std::filesystem::path object(const OdString& url) const {
        return folder_ / ".qrv/objects" / url.mid(3).toNarrow();
    }

    qrv_test::TemporaryFolder folder_;
    RootPath root_ = RootPath::get(folder_.text(), true).value();
    ObjectStorage storage_;
};

TEST_F(ObjectStorageTest, KeepsAFileUnderItsDigest) {
    EXPECT_EQ(stored("sheets/a.dxf", "abc"), urlOf(abcDigest));
    EXPECT_EQ(readFile(folder_ / (".qrv/objects/" + abcDigest)), "abc");
}

TEST_F(ObjectStorageTest, KeepsEqualContentsOnceAndLeavesNothingElseBehind) {
    stored("a.dxf", "abc");
    stored("b.dxf", "abc");
    EXPECT_THAT(qrv_test::listTree(folder_ / ".qrv"),
                ElementsAre("objects/", "objects/" + abcDigest));
}

TEST_F(ObjectStorageTest, RefusesToStoreWhatIsNoFile) {
    const Expected<OdString> url = storage_.store(root_, L"missing.dxf");
    ASSERT_FALSE(url);
    EXPECT_EQ(url.error().message,
              OdString(L"'") + folder_.text("missing.dxf") + OdString(L"' cannot be read"));
}

TEST_F(ObjectStorageTest, RestoresTheSameBytes) {
    const OdString url = stored("plan.dxf", contents);
    EXPECT_TRUE(storage_.restore(root_, url, L"back/plan.dxf").value());
    EXPECT_EQ(readFile(folder_ / "back/plan.dxf"), contents);
    EXPECT_TRUE(storage_.restore(root_, url, L".qrv/properties/ignore").value());
    EXPECT_EQ(readFile(folder_ / ".qrv/properties/ignore"), contents);
}

TEST_F(ObjectStorageTest, SaysOfAMissingVersionThatItIsNotThere) {
    EXPECT_FALSE(storage_.contains(root_, urlOf(abcDigest)).value());
    EXPECT_FALSE(storage_.restore(root_, urlOf(abcDigest), L"plan.dxf").value());
    EXPECT_THAT(storage_.revisions(root_, urlOf(abcDigest)).value(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(folder_ / "plan.dxf"));
}

TEST_F(ObjectStorageTest, NeverRestoresADamagedVersion) {
    const OdString url = stored("plan.dxf", "abc");
    EXPECT_TRUE(storage_.verify(root_, url));
    writeFile(object(url), "abd");
    const OdString damaged = L"The stored file '" + OdString::fromNarrow(object(url).string()) +
                             OdString(L"' is damaged");

    const Expected<void> verified = storage_.verify(root_, url);
    ASSERT_FALSE(verified);
    EXPECT_EQ(verified.error().message, damaged);
    const Expected<bool> restored = storage_.restore(root_, url, L"back.dxf");
    ASSERT_FALSE(restored);
    EXPECT_EQ(restored.error().message, damaged);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "back.dxf"));
}

TEST_F(ObjectStorageTest, RefusesUrlsThatAreNoDigest) {
    const std::vector<OdString> urls = {
        L"",
        L"po:",
        L"tf:plan#1",
        urlOf(abcDigest.substr(1)),
        urlOf(abcDigest + "0"),
        urlOf("B" + abcDigest.substr(1)),
        urlOf("../" + abcDigest.substr(3)),
        OdString::fromNarrow("po-" + abcDigest),
    };
    for (const OdString& url : urls) {
        const Expected<bool> answer = storage_.contains(root_, url);
        ASSERT_FALSE(answer) << url.toNarrow();
        EXPECT_EQ(answer.error().message, L"'" + url + L"' names no stored file");
    }
}

TEST_F(ObjectStorageTest, RefusesToRestoreOutsideTheWorkingTree) {
    const OdString url = stored("plan.dxf", "abc");
    const qrv_test::TemporaryFolder outside;
    std::filesystem::create_directory_symlink(outside.path(), folder_ / "link");
    const std::vector<OdString> paths = {
        L"",
        L".",
        L"..",
        L"../plan.dxf",
        L"a/../../plan.dxf",
        L"/x.dxf",
        L"link/x.dxf",
        L".qrv",
        L".qrv/x",
        L".QRV/qrv.state",
        L"a/.qrv",
        L".qrv/a/b/..",
        L".qrv/objects",
        OdString(std::wstring(L"a\0b", 3)),
    };
    const std::vector<std::string> tree = qrv_test::listTree(folder_.path());
    for (const OdString& path : paths) {
        const Expected<bool> answer = storage_.restore(root_, url, path);
        ASSERT_FALSE(answer) << path.toNarrow();
        EXPECT_EQ(answer.error().message, L"'" + path + L"' is no path of this project");
    }
    EXPECT_THAT(qrv_test::listTree(outside.path()), IsEmpty());
    EXPECT_EQ(qrv_test::listTree(folder_.path()), tree);
}

TEST_F(ObjectStorageTest, LeavesTheOldFileWhenTheNewOneCannotTakeItsPlace) {
    const OdString url = stored("plan.dxf", "abc");
    writeFile(folder_ / "taken/inside.dxf", "old");
    const Expected<bool> answer = storage_.restore(root_, url, L"taken");
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error().message,
              OdString(L"'") + folder_.text("taken") + OdString(L"' cannot be written"));
    EXPECT_EQ(readFile(folder_ / "taken/inside.dxf"), "old");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "taken.new"));
}

TEST_F(ObjectStorageTest, ExportsToAnyPlace) {
    const OdString url = stored("plan.dxf", contents);
    const qrv_test::TemporaryFolder outside;
    EXPECT_TRUE(storage_.exportTo(root_, url, outside.text("sent/plan.dxf")));
    EXPECT_EQ(readFile(outside / "sent/plan.dxf"), contents);
}

TEST_F(ObjectStorageTest, RemovesAVersion) {
    const OdString url = stored("plan.dxf", "abc");
    EXPECT_THAT(storage_.revisions(root_, url).value(), ElementsAre(url));
    EXPECT_TRUE(storage_.remove(root_, url));
    EXPECT_FALSE(storage_.contains(root_, url).value());
    EXPECT_TRUE(storage_.remove(root_, url));
}

TEST_F(ObjectStorageTest, ComparesNothing) {
    const Expected<common::DiffHandles> handles =
        storage_.compare(root_, urlOf(abcDigest), urlOf(abcDigest));
    ASSERT_FALSE(handles);
    EXPECT_EQ(
        handles.error().message,
        L"'" + urlOf(abcDigest) + L"' is not kept as a drawing: its objects cannot be compared");
}

}  // namespace
