#include <common/state/Cache.h>
#include <common/state/StateFile.h>
#include <tests/common/state/StateRepository.h>
#include <tests/support/Effort.h>
#include <tests/support/RecordingIo.h>

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>

namespace {

using common::State;
using qrv_test::loadOutcome;
using qrv_test::StateRepository;

const std::string notJson = "OdError: Unable to parse json, please check if syntax is valid";

/// Far beyond any state that a person has, and beyond any buffer or stack.
const std::size_t largeFile = qrv_test::isExhaustive() ? 100'000'000 : 5'000'000;
const std::size_t largeDepth = largeFile / 10;

TEST(StateFile, CutOffAnywhereIsAlwaysAnError) {
    const StateRepository repository;
    const std::string whole = qrv_test::stateSample("full");
    int unclosedStrings = 0;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        repository.writeStateFile(whole.substr(0, size));
        const std::string outcome = loadOutcome(repository);
        if (outcome == "length_error")
            ++unclosedStrings;
        else
            ASSERT_EQ(outcome, notJson) << "at byte " << size;
    }
    EXPECT_GT(unclosedStrings, 500);
    qrv_test::tellTried(whole.size(), "damaged inputs");
    repository.writeStateFile(whole);
    EXPECT_EQ(qrv_test::load(repository), qrv_test::fullState());
}

TEST(StateFile, WithOneByteChangedAnywhereIsRefusedOrReadAsAStateThatCanBeWritten) {
    const StateRepository repository;
    const std::string whole = qrv_test::stateSample("full");
    std::size_t loaded = 0;
    std::size_t refused = 0;
    for (const char damage : {'"', '\\', '{', '9', '\xFF'}) {
        for (std::size_t position = 0; position < whole.size(); position += 3) {
            std::string damaged = whole;
            damaged[position] = damage;
            repository.writeStateFile(damaged);
            if (loadOutcome(repository) != "loaded") {
                ++refused;
                continue;
            }
            ++loaded;
            const State state = qrv_test::load(repository);
            ASSERT_TRUE(common::writeState(state, repository.root().statePath())) << damaged;
            ASSERT_TRUE(qrv_test::load(repository) == state) << damaged;
        }
    }
    EXPECT_GT(loaded, 100U);
    EXPECT_GT(refused, 1000U);
    qrv_test::tellTried(loaded + refused, "damaged inputs");
}

TEST(StateFile, OfManyMegabytesDoesNoHarm) {
    const StateRepository repository;
    State state;
    const std::wstring folder(150, L'f');
    for (int file = 0; file < static_cast<int>(largeFile / 270); ++file)
        state.index.emplace_hint(state.index.end(), folder + std::to_wstring(10'000'000 + file),
                                 common::IndexData{file, file % 2 == 0});
    ASSERT_TRUE(common::writeState(state, repository.root().statePath()));
    ASSERT_GT(std::filesystem::file_size(repository.stateFile()), largeFile);
    EXPECT_TRUE(qrv_test::load(repository) == state);
}

TEST(StateFile, OfOneEndlessStringDoesNoHarm) {
    const StateRepository repository;
    const std::string start = R"({"head":{"reference":")";
    repository.writeStateFile(start + std::string(largeFile, 'x'));
    EXPECT_EQ(loadOutcome(repository), "length_error");
    repository.writeStateFile(start + std::string(largeFile, 'x') + "\"}}");
    EXPECT_EQ(static_cast<std::size_t>(qrv_test::load(repository).head.reference.getLength()),
              largeFile);
}

TEST(StateFile, OfMillionsOfOpenBracketsDoesNoHarm) {
    EXPECT_EQ(loadOutcome(std::string(largeDepth, '[')), notJson);
    std::string objects;
    for (std::size_t depth = 0; depth < largeDepth / 10; ++depth)
        objects += "{\"a\":";
    EXPECT_EQ(loadOutcome(objects), notJson);
}

TEST(StateFile, OfMillionsOfNestedListsDoesNoHarm) {
    const std::string nest = std::string(largeDepth, '[') + std::string(largeDepth, ']');
    EXPECT_EQ(loadOutcome("{\"head\":{\"reference\":\"m\"},\"index\":[" + nest + "]}"),
              "returned: Encounterd 'object', found 'array. While parsing json map.'");
}

TEST(Cache, LetsTheErrorOfAnUnclosedStringPass) {
    const StateRepository repository;
    const qrv_test::RecordingIo io;
    repository.writeStateFile("{\"head");
    EXPECT_THROW(static_cast<void>(common::Cache::get(repository.root(), io)), std::length_error);
    EXPECT_EQ(repository.stateFileBytes(), "{\"head");
    EXPECT_TRUE(io.results.empty());
}

}  // namespace
