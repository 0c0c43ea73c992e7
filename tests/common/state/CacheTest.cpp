#include <common/state/Cache.h>
#include <common/state/Transaction.h>
#include <tests/common/state/StateRepository.h>
#include <tests/support/RecordingIo.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace {

namespace fs = std::filesystem;

using common::Cache;
using common::FileChange;
using common::State;
using qrv_test::RecordingIo;
using qrv_test::stateSample;

// Reads as a state, but is not what would be written.
const std::string oddlySpaced = R"( {"head":{"reference":"roof"}} )";

class CacheTest : public testing::Test {
protected:
    std::shared_ptr<Cache> open() { return Cache::get(repository.root(), io).value(); }
    std::string errorOfGet() {
        return Cache::get(repository.root(), io).error().message.toNarrow();
    }

    qrv_test::StateRepository repository;
    RecordingIo io;
};

TEST_F(CacheTest, IsNotMadeWithoutAStateFile) {
    EXPECT_EQ(errorOfGet(), "No state file found at " + repository.stateFile().string());
    EXPECT_FALSE(repository.hasStateFile());
    EXPECT_TRUE(io.results.empty());
}

TEST_F(CacheTest, IsNotMadeOfWhatIsNoState) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "Unable to parse json, please check if syntax is valid"},
        {"{\"head\":}", "Unable to parse json, please check if syntax is valid"},
        {"[]", "Error:\tExpected json type 'object', found 'array'"},
        {"{}", "State does not contain HEAD."},
        {R"({"head":{}})", "HEAD does not point to a branch"},
        {R"({"head":{"reference":1}})",
         "Error:\tExpected json type 'string', found 'int'\njson key:\t\"reference\""},
        {R"({"head":{"reference":"m","commit":1}})",
         "Unable to find json key 'head'\njson key:\t\"head\""},
        {R"({"head":{"reference":"m"},"staged_files":"x"})",
         "Error:\tExpected json type 'array', found 'string'\nContext:\tstaged_files\n"
         "json key:\t\"staged_files\""},
        {R"({"head":{"reference":"m"},"index":[1]})",
         "Encounterd 'object', found 'int. While parsing json map.'"},
        {R"({"head":{"reference":"m"},"staged_files":[{"path":"p","file_change":"x"}]})",
         "Unsupported file change enum: x"},
    };
    for (const auto& [bytes, message] : cases) {
        repository.writeStateFile(bytes);
        EXPECT_EQ(errorOfGet(), message) << bytes;
        EXPECT_EQ(repository.stateFileBytes(), bytes);
    }
    EXPECT_TRUE(io.results.empty());
}

TEST_F(CacheTest, IsNotMadeOfWhatCannotBeRead) {
    fs::create_directory(repository.stateFile());
    EXPECT_EQ(errorOfGet(),
              "Unable to read file '" + repository.stateFile().string() + "': Is a directory");
    fs::remove(repository.stateFile());
    fs::create_symlink("qrv.state", repository.stateFile());
    EXPECT_EQ(errorOfGet(), "Unable to read file '" + repository.stateFile().string() +
                                "': Too many levels of symbolic links");
    fs::remove(repository.stateFile());
    // A link to nothing is no file.
    fs::create_symlink("nowhere", repository.stateFile());
    EXPECT_EQ(errorOfGet(), "No state file found at " + repository.stateFile().string());
}

TEST_F(CacheTest, HoldsWhatTheFileSays) {
    repository.writeStateFile(stateSample("full"));
    EXPECT_EQ(open()->read(), qrv_test::fullState());
}

TEST_F(CacheTest, ThatIsOnlyReadLeavesTheFileAndTellsNothing) {
    repository.writeStateFile(oddlySpaced);
    EXPECT_EQ(open()->read().head.reference, L"roof");
    EXPECT_EQ(repository.stateFileBytes(), oddlySpaced);
    EXPECT_TRUE(io.results.empty());
}

TEST_F(CacheTest, IsWrittenWhenItsLastOwnerLetsGo) {
    repository.writeStateFile(stateSample("default"));
    std::shared_ptr<Cache> cache = open();
    cache->write() = qrv_test::fullState();
    std::shared_ptr<Cache> other = cache;
    cache.reset();
    EXPECT_EQ(repository.stateFileBytes(), stateSample("default"));
    EXPECT_TRUE(io.results.empty());
    other.reset();
    EXPECT_EQ(repository.stateFileBytes(), stateSample("full"));
    ASSERT_EQ(io.results.size(), 1u);
    EXPECT_TRUE(io.results[0]);
}

TEST_F(CacheTest, IsWrittenAlsoWhenNothingWasChangedInTheEnd) {
    repository.writeStateFile(oddlySpaced);
    open()->write();
    EXPECT_EQ(repository.stateFileBytes(),
              "{\n    \"head\" : {\n        \"reference\" : \"roof\"\n    }\n}");
    EXPECT_EQ(io.results.size(), 1u);
}

// The state of one project was written over that of another: a path that begins at the current
// folder was only looked up when the cache ended, and the host had gone to another folder.
TEST_F(CacheTest, IsWrittenWhereItWasReadAlsoFromAnotherFolder) {
    const qrv_test::StateRepository other;
    const fs::path before = fs::current_path();
    fs::current_path(repository / "");
    const common::RootPath root = common::RootPath::get(L".", false).value();
    Cache::create(root, io);
    std::shared_ptr<Cache> written = Cache::get(root, io).value();
    std::shared_ptr<Cache> refused = Cache::get(root, io).value();
    fs::current_path(other / "");
    written->write().head.reference = L"roof";
    written.reset();
    EXPECT_EQ(qrv_test::load(repository).head.reference, L"roof");
    fs::remove_all(repository / ".qrv");
    refused->write();
    refused.reset();
    fs::current_path(before);
    EXPECT_TRUE(other.metadata().empty());
    ASSERT_EQ(io.results.size(), 3u);
    EXPECT_EQ(io.results[2].error().message, L"Error writing to file './.qrv/qrv.state'");
}

TEST_F(CacheTest, TellsTheHostAfterTheFileIsWritten) {
    class ReadingIo : public RecordingIo {
    public:
        explicit ReadingIo(const qrv_test::StateRepository& where) : repository(where) {}
        void reportResult(Expected<void>) const override { bytes = repository.stateFileBytes(); }
        const qrv_test::StateRepository& repository;
        mutable std::string bytes;
    };
    const ReadingIo reading(repository);
    Cache::create(repository.root(), reading);
    EXPECT_EQ(reading.bytes, stateSample("default"));
}

TEST_F(CacheTest, TellsTheHostWhyItCouldNotBeWritten) {
    repository.writeStateFile(stateSample("default"));
    std::shared_ptr<Cache> cache = open();
    cache->write().stagedFiles.emplace_back(L"a", static_cast<FileChange>(9));
    cache.reset();
    ASSERT_EQ(io.results.size(), 1u);
    EXPECT_EQ(io.results[0].error().message, L"unsupported file change");

    cache = open();
    cache->write();
    fs::remove_all(repository / ".qrv");
    cache.reset();
    ASSERT_EQ(io.results.size(), 2u);
    EXPECT_EQ(io.results[1].error().message.toNarrow(),
              "Error writing to file '" + repository.stateFile().string() + "'");
    EXPECT_FALSE(fs::exists(repository / ".qrv"));
}

TEST_F(CacheTest, LetsNoExceptionOfTheHostOutOfItsEnd) {
    class ThrowingIo : public RecordingIo {
    public:
        void reportResult(Expected<void>) const override { throw 1; }
    };
    const ThrowingIo throwing;
    EXPECT_NO_THROW(Cache::create(repository.root(), throwing));
    EXPECT_EQ(repository.stateFileBytes(), stateSample("default"));
}

TEST_F(CacheTest, IsReadAnewByEveryCall) {
    repository.writeStateFile(stateSample("default"));
    const std::shared_ptr<Cache> first = open();
    repository.writeStateFile(oddlySpaced);
    const std::shared_ptr<Cache> second = open();
    EXPECT_NE(first, second);
    EXPECT_EQ(first->read().head.reference, L"master");
    EXPECT_EQ(second->read().head.reference, L"roof");
}

TEST_F(CacheTest, OverwritesWhatAnEarlierEndedOneWrote) {
    repository.writeStateFile(stateSample("default"));
    std::shared_ptr<Cache> first = open();
    std::shared_ptr<Cache> second = open();
    first->write().head.reference = L"first";
    second->write().head.reference = L"second";
    second.reset();
    EXPECT_EQ(qrv_test::load(repository).head.reference, L"second");
    first.reset();
    EXPECT_EQ(qrv_test::load(repository).head.reference, L"first");
    EXPECT_EQ(io.results.size(), 2u);
}

TEST_F(CacheTest, IsWrittenByACopyMadeAfterTheChangeToo) {
    repository.writeStateFile(stateSample("default"));
    std::shared_ptr<Cache> cache = open();
    const Cache unchanged(*cache);
    cache->write().head.reference = L"roof";
    {
        Cache copy(*cache);
        EXPECT_EQ(copy.read(), cache->read());
        copy.write().head.reference = L"copy";
        EXPECT_EQ(cache->read().head.reference, L"roof");
    }
    EXPECT_EQ(qrv_test::load(repository).head.reference, L"copy");
    { const Cache copy(*cache); }
    EXPECT_EQ(qrv_test::load(repository).head.reference, L"roof");
    EXPECT_EQ(io.results.size(), 2u);
}

TEST_F(CacheTest, IsNotWrittenByACopyMadeBeforeTheChange) {
    repository.writeStateFile(oddlySpaced);
    const std::shared_ptr<Cache> cache = open();
    { const Cache copy(*cache); }
    EXPECT_EQ(repository.stateFileBytes(), oddlySpaced);
    EXPECT_TRUE(io.results.empty());
}

TEST_F(CacheTest, IsWrittenOnlyByTheOneItWasMovedTo) {
    repository.writeStateFile(stateSample("default"));
    std::shared_ptr<Cache> source = open();
    source->write() = qrv_test::fullState();
    std::optional<Cache> target(std::move(*source));
    source.reset();
    EXPECT_EQ(repository.stateFileBytes(), stateSample("default"));
    EXPECT_TRUE(io.results.empty());
    target.reset();
    EXPECT_EQ(repository.stateFileBytes(), stateSample("full"));
    EXPECT_EQ(io.results.size(), 1u);
}

TEST_F(CacheTest, CreatesADefaultStateFile) {
    Cache::create(repository.root(), io);
    EXPECT_EQ(repository.stateFileBytes(), stateSample("default"));
    ASSERT_EQ(io.results.size(), 1u);
    EXPECT_TRUE(io.results[0]);
    EXPECT_EQ(open()->read(), State());
    EXPECT_EQ(io.results.size(), 1u);
}

TEST_F(CacheTest, CreatesNothingOverAnExistingFile) {
    for (const std::string bytes : {"", "not a state", "{}"}) {
        repository.writeStateFile(bytes);
        Cache::create(repository.root(), io);
        EXPECT_EQ(repository.stateFileBytes(), bytes);
    }
    EXPECT_TRUE(io.results.empty());
}

TEST_F(CacheTest, CreatesNothingOverAFolderOrALinkInACircle) {
    fs::create_directory(repository.stateFile());
    Cache::create(repository.root(), io);
    EXPECT_TRUE(fs::is_directory(repository.stateFile()));
    fs::remove(repository.stateFile());
    fs::create_symlink("qrv.state", repository.stateFile());
    Cache::create(repository.root(), io);
    EXPECT_TRUE(fs::is_symlink(repository.stateFile()));
    EXPECT_TRUE(io.results.empty());
}

TEST_F(CacheTest, CreatesADefaultStateFileInPlaceOfALinkToNothing) {
    fs::create_symlink("nowhere", repository.stateFile());
    Cache::create(repository.root(), io);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(repository.stateFile())));
    EXPECT_EQ(repository.stateFileBytes(), stateSample("default"));
}

TEST_F(CacheTest, TellsTheHostWhyNothingCouldBeCreated) {
    fs::remove_all(repository / ".qrv");
    Cache::create(repository.root(), io);
    ASSERT_EQ(io.results.size(), 1u);
    EXPECT_EQ(io.results[0].error().message.toNarrow(),
              "Error writing to file '" + repository.stateFile().string() + "'");
}

TEST_F(CacheTest, CanBeCopiedAndMovedButNotMadeByAnyone) {
    EXPECT_TRUE(std::is_copy_constructible_v<Cache>);
    EXPECT_TRUE(std::is_move_constructible_v<Cache>);
    EXPECT_FALSE((std::is_constructible_v<Cache, common::RootPath, RecordingIo>));
    EXPECT_FALSE((std::is_constructible_v<Cache, common::RootPath, State, RecordingIo>));
}

}  // namespace
