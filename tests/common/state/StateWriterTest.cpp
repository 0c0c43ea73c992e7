#include <common/state/StateFile.h>
#include <tests/common/state/FailingAllocation.h>
#include <tests/common/state/RandomStates.h>
#include <tests/common/state/StateRepository.h>
#include <tests/common/state/TreeWriter.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

using common::ConflictData;
using common::DiffHandles;
using common::FileChange;
using common::State;
using common::writeState;
using qrv_test::FailingAllocation;
using qrv_test::fullState;
using qrv_test::RandomStates;
using qrv_test::StateRepository;
using qrv_test::stateSample;
using qrv_test::treeWritten;
using testing::ElementsAre;

constexpr auto unknownChange = static_cast<FileChange>(4);

/// The bytes that writing `state` gives.
std::string written(const State& state) {
    const StateRepository repository;
    const Expected<void> result = writeState(state, repository.root().statePath());
    EXPECT_TRUE(result) << "while writing";
    return repository.stateFileBytes();
}

State withConflict(const DiffHandles& handles) {
    State state;
    state.conflicts = {{L"p", L"u", FileChange::added, FileChange::removed, handles}};
    return state;
}

TEST(StateWriter, WritesADefaultStateAsAHeadOnly) {
    EXPECT_EQ(written(State()),
              "{\n    \"head\" : {\n        \"reference\" : \"master\"\n    }\n}");
}

TEST(StateWriter, WritesTheSamples) {
    EXPECT_EQ(written(State()), stateSample("default"));
    EXPECT_EQ(written(fullState()), stateSample("full"));
}

TEST(StateWriter, ReplacesTheFileAsAWhole) {
    const StateRepository repository;
    repository.writeStateFile(stateSample("full"));
    ASSERT_TRUE(writeState(State(), repository.root().statePath()));
    EXPECT_EQ(repository.stateFileBytes(), stateSample("default"));
    EXPECT_THAT(repository.metadata(), ElementsAre("qrv.state"));
}

// The oddity of the reader, seen from the writer's side.
TEST(StateWriter, WritesACommitThatTheReaderDoesNotTakeBack) {
    State state;
    state.head.commit = -42;
    const std::string bytes = written(state);
    EXPECT_EQ(bytes,
              "{\n    \"head\" : {\n        \"commit\" : -42,\n        \"reference\" : "
              "\"master\"\n    }\n}");
    EXPECT_EQ(qrv_test::loadOutcome(bytes),
              "JsonParseError: Unable to find json key 'head'\njson key:\t\"head\"");
}

TEST(StateWriter, LeavesOutHandlesThatAreModifiedBlocksOnly) {
    const std::string bytes = written(withConflict({{}, {}, {}, {0xB}, {}, {}}));
    EXPECT_EQ(bytes, written(withConflict({})));
    EXPECT_EQ(bytes.find("handles"), std::string::npos) << bytes;
    EXPECT_EQ(qrv_test::load(bytes).conflicts.at(0).handles, DiffHandles());
}

TEST(StateWriter, WritesOnlyTheListsOfHandlesThatHoldSome) {
    const DiffHandles handles{{}, {0xFF}, {}, {}, {}, {}};
    const std::string bytes = written(withConflict(handles));
    EXPECT_NE(bytes.find("\"handles\" : {\n"
                         "                \"locally_removed\" : [\n"
                         "                    \"FF\"\n"
                         "                ]\n"
                         "            },\n"),
              std::string::npos)
        << bytes;
    EXPECT_EQ(qrv_test::load(bytes), withConflict(handles));
}

TEST(StateWriter, LeavesOutTheDrawings) {
    class Drawing : public OdRxObject {};
    auto* drawing = new Drawing;
    DiffHandles handles{{1}, {}, {}, {}, OdRxObjectPtr(drawing), OdRxObjectPtr(drawing)};
    drawing->release();
    EXPECT_EQ(written(withConflict(handles)), written(withConflict({{1}, {}, {}, {}, {}, {}})));
}

TEST(StateWriter, RefusesAFileChangeWithoutANameAndLeavesTheFile) {
    std::vector<State> states(3);
    states[0].stagedFiles = {{L"a", FileChange::added}, {L"b", unknownChange}};
    states[1].conflicts = {{L"p", L"u", unknownChange, FileChange::added}};
    states[2].conflicts = {{L"p", L"u", FileChange::added, unknownChange}};
    for (const State& state : states) {
        const StateRepository repository;
        const Expected<void> withoutFile = writeState(state, repository.root().statePath());
        ASSERT_FALSE(withoutFile);
        EXPECT_EQ(withoutFile.error().message, L"unsupported file change");
        EXPECT_FALSE(repository.hasStateFile());

        repository.writeStateFile("as it was");
        const Expected<void> withFile = writeState(state, repository.root().statePath());
        ASSERT_FALSE(withFile);
        EXPECT_EQ(withFile.error().message, L"unsupported file change");
        EXPECT_EQ(repository.stateFileBytes(), "as it was");
    }
}

TEST(StateWriter, TellsThePathThatItCannotWrite) {
    const StateRepository repository;
    std::filesystem::remove_all(repository / ".qrv");
    const OdString path = repository.root().statePath();
    const Expected<void> result = writeState(State(), path);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().message, L"Error writing to file '" + path + L"'");
    EXPECT_EQ(result.error().code, 0);
}

TEST(StateWriter, TellsOfAPathThatIsAFolder) {
    const StateRepository repository;
    std::filesystem::create_directories(repository.stateFile() / "inside");
    const OdString path = repository.root().statePath();
    const Expected<void> result = writeState(State(), path);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().message, L"Error writing to file '" + path + L"'");
    EXPECT_TRUE(std::filesystem::is_directory(repository.stateFile() / "inside"));
}

TEST(StateWriter, ReturnsEveryExceptionAsAnErrorAndLeavesTheFile) {
    const StateRepository repository;
    const State state = fullState();
    const OdString path = repository.root().statePath();
    const std::string complete = stateSample("full");
    int failures = 0;
    for (long nth = 1;; ++nth) {
        repository.writeStateFile("as it was");
        FailingAllocation failing(nth);
        const Expected<void> result = writeState(state, path);
        if (!failing.hasFired())
            break;
        ++failures;
        ASSERT_FALSE(result) << nth;
        EXPECT_EQ(result.error().message,
                  L"An unexpected error occurred while deserializing the state file.");
        EXPECT_EQ(repository.stateFileBytes(), "as it was") << nth;
    }
    EXPECT_GT(failures, 20);
    EXPECT_EQ(repository.stateFileBytes(), complete);
    EXPECT_THAT(repository.metadata(), ElementsAre("qrv.state"));
}

TEST(StateWriter, MakesOfAStateWhatTheJsonWriterMakesOfItsTree) {
    RandomStates states;
    for (int run = 0; run < 200; ++run) {
        State state = states.next();
        if (run % 10 == 0)
            state.head.commit = run - 100;
        ASSERT_EQ(written(state), treeWritten(state));
    }
}

// It goes into the file in parts, which end at different places of a row.
TEST(StateWriter, MakesOfALargeStateWhatTheJsonWriterMakesOfItsTree) {
    State state = qrv_test::fullState();
    for (int file = 0; file < 3000; ++file) {
        const std::wstring name = std::to_wstring(file) + std::wstring(file % 70, L'n');
        state.index[OdString(name)] = {file, file % 2 == 0};
        state.stagedFiles.emplace_back(OdString(name), common::FileChange::added);
        state.conflicts.insert(state.conflicts.end(), state.conflicts[1]);
        state.renames[OdString(name)] = OdString(std::wstring(file % 50, L'\u00E4'));
    }
    state.renames[L"long"] = OdString(std::wstring(100'000, L'l'));
    EXPECT_TRUE(written(state) == treeWritten(state));
}

}  // namespace
