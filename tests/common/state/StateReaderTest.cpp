#include <common/state/StateFile.h>
#include <tests/common/state/StateRepository.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace {

using common::ConflictData;
using common::DiffHandles;
using common::FileChange;
using common::IndexData;
using common::StagedFile;
using common::State;
using qrv_test::load;
using qrv_test::loadOutcome;
using qrv_test::StateRepository;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::Pair;

const std::string notJson = "OdError: Unable to parse json, please check if syntax is valid";

/// A file of a valid head and further members.
std::string withHead(const std::string& members) {
    return R"({"head":{"reference":"master"},)" + members + "}";
}

std::string indexElement(const std::string& path, const std::string& lastChecked,
                         const std::string& modified) {
    return R"({"path":")" + path + R"(","data":{"last_checked":)" + lastChecked +
           R"(,"modified":)" + modified + "}}";
}

TEST(StateReader, ReadsAFileOfNothingButAHead) {
    const State state = load(R"({"head":{"reference":"roof"}})");
    EXPECT_EQ(state.head.reference, L"roof");
    EXPECT_EQ(state.head.commit, std::nullopt);
    EXPECT_THAT(state.stagedFiles, IsEmpty());
    EXPECT_THAT(state.renames, IsEmpty());
    EXPECT_THAT(state.index, IsEmpty());
    EXPECT_THAT(state.conflicts, IsEmpty());
}

TEST(StateReader, ReadsTheSamples) {
    EXPECT_EQ(load(qrv_test::stateSample("default")), State());
    EXPECT_EQ(load(qrv_test::stateSample("full")), qrv_test::fullState());
}

TEST(StateReader, TakesTheCommitFromTheHeadsMemberHead) {
    const auto commitOf = [](const std::string& members) {
        return load(R"({"head":{"reference":"m",)" + members + "}}").head.commit;
    };
    EXPECT_THAT(commitOf(R"("commit":5,"head":7)"), Optional(7));
    EXPECT_THAT(commitOf(R"("commit":null,"head":-7)"), Optional(-7));
    EXPECT_THAT(commitOf(R"("commit":"x","head":9223372036854775807)"),
                Optional(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(commitOf(R"("head":7)"), std::nullopt);
    EXPECT_EQ(commitOf(R"("head":"x")"), std::nullopt);
}

TEST(StateReader, KeepsTheOrderOfStagedFilesAndTheirRepetitions) {
    const State state = load(withHead(R"("staged_files":[{"path":"z","file_change":"removed"},)"
                                      R"({"path":"a","file_change":"added"},)"
                                      R"({"path":"z","file_change":"modified"},)"
                                      R"({"path":"","file_change":"unchanged"}])"));
    EXPECT_THAT(state.stagedFiles, ElementsAre(StagedFile(L"z", FileChange::removed),
                                               StagedFile(L"a", FileChange::added),
                                               StagedFile(L"z", FileChange::modified),
                                               StagedFile(L"", FileChange::unchanged)));
}

TEST(StateReader, KeepsTheFirstOfTwoRenamesToOnePath) {
    const State state = load(withHead(
        R"("renames":[{"new":"b","previous":"1"},{"new":"a","previous":"2"},)"
        R"({"new":"b","previous":"3"},{"new":"B","previous":"4"},{"new":"a","previous":"5"}])"));
    EXPECT_THAT(state.renames, ElementsAre(Pair(OdString(L"B"), OdString(L"4")),
                                           Pair(OdString(L"a"), OdString(L"2")),
                                           Pair(OdString(L"b"), OdString(L"1"))));
}

TEST(StateReader, KeepsTheFirstOfTwoIndexEntriesOfOnePath) {
    const State state = load(
        withHead("\"index\":[" + indexElement("b", "1", "true") + "," +
                 indexElement("b", "2", "false") + "," + indexElement("a", "3", "false") + "," +
                 indexElement("b", "4", "false") + "," + indexElement("a", "5", "true") + "]"));
    EXPECT_THAT(state.index, ElementsAre(Pair(OdString(L"a"), IndexData{3, false}),
                                         Pair(OdString(L"b"), IndexData{1, true})));
}

TEST(StateReader, ReadsTimesOfAllSixtyFourBits) {
    const State state =
        load(withHead("\"index\":[" + indexElement("least", "-9223372036854775808", "true") + "," +
                      indexElement("most", "9223372036854775807", "true") + "," +
                      indexElement("unsigned", "18446744073709551615", "true") + "]"));
    EXPECT_EQ(state.index.at(L"least").lastChecked, std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(state.index.at(L"most").lastChecked, std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(state.index.at(L"unsigned").lastChecked, -1);
}

TEST(StateReader, KeepsTheOrderOfConflictsAlsoOfOnePath) {
    const State state = load(withHead(
        R"("conflicts":[{"path":"z","remote_url":"1","local_type":"added","remote_type":"removed"},)"
        R"({"path":"a","remote_url":"2","local_type":"modified","remote_type":"unchanged"},)"
        R"({"path":"z","remote_url":"3","local_type":"removed","remote_type":"modified"}])"));
    EXPECT_THAT(state.conflicts,
                ElementsAre(ConflictData(L"z", L"1", FileChange::added, FileChange::removed),
                            ConflictData(L"a", L"2", FileChange::modified, FileChange::unchanged),
                            ConflictData(L"z", L"3", FileChange::removed, FileChange::modified)));
}

TEST(StateReader, ReadsHandlesWhereThereAreAny) {
    const auto handlesOf = [](const std::string& handles) {
        return load(withHead(R"("conflicts":[{"path":"p","remote_url":"u","local_type":"added",)"
                             R"("remote_type":"added",)" +
                             handles + "}]"))
            .conflicts.at(0)
            .handles;
    };
    EXPECT_EQ(handlesOf(R"("unknown":1)"), DiffHandles());
    EXPECT_EQ(handlesOf(R"("handles":{})"), DiffHandles());
    EXPECT_EQ(handlesOf(R"("handles":{"modified":[],"modified_blocks":[]})"), DiffHandles());
    EXPECT_EQ(handlesOf(R"("handles":{"locally_removed":["2A","1"]})"),
              (DiffHandles{{}, {0x2A, 1}, {}, {}, {}, {}}));
    EXPECT_EQ(handlesOf(R"("handles":{"modified":["ffffffffffffffff","0"],)"
                        R"("remotely_removed":["aBc"],"modified_blocks":["B"]})"),
              (DiffHandles{{0xFFFFFFFFFFFFFFFF, 0}, {}, {0xABC}, {0xB}, {}, {}}));
}

TEST(StateReader, IgnoresWhatItDoesNotKnow) {
    EXPECT_EQ(load(R"({"head":{"reference":"master","x":[1]},"version":2,"HEAD":null} and more)"),
              State());
}

TEST(StateReader, TakesTheLaterOfTwoEqualMembers) {
    EXPECT_EQ(load(R"({"head":1,"head":{"reference":"a","reference":"b"}})").head.reference, L"b");
}

TEST(StateReader, ReadsAFileInEachEncoding) {
    State expected;
    expected.head.reference = L"\u00FC";
    EXPECT_EQ(load("{\"head\":{\"reference\":\"\xC3\xBC\"}}"), expected);
    EXPECT_EQ(load("\xEF\xBB\xBF{\"head\":{\"reference\":\"\xC3\xBC\"}}"), expected);
    EXPECT_EQ(load(R"({"head":{"reference":"\u00fc"}})"), expected);
    std::string utf16 = "\xFF\xFE";
    for (const char character : std::string(R"({"head":{"reference":"\u00fc"}})"))
        utf16 += std::string{character, '\0'};
    EXPECT_EQ(load(utf16), expected);
}

TEST(StateReader, ThrowsForATextThatIsNotJson) {
    for (const std::string text :
         {"", " ", "x", "{", "{\"head\"", "{head:1}", "nul", "{\"head\":}"})
        EXPECT_EQ(loadOutcome(text), notJson) << text;
}

TEST(StateReader, LetsTheErrorOfAnUnclosedStringPass) {
    EXPECT_EQ(loadOutcome("{\"head"), "length_error");
    EXPECT_EQ(loadOutcome(R"({"head":{"reference":"mas)"), "length_error");
}

TEST(StateReader, ThrowsForAFileThatCannotBeRead) {
    const StateRepository repository;
    const std::string path = repository.stateFile().string();
    EXPECT_EQ(loadOutcome(repository),
              "OdError: Unable to read file '" + path + "': No such file or directory");
}

TEST(StateReader, ReturnsTheErrorOfAnUnknownFileChange) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {withHead(R"("staged_files":[{"path":"p","file_change":"Added"}])"), "Added"},
        {withHead(R"("staged_files":[{"path":"p","file_change":""}])"), ""},
        {withHead(R"("conflicts":[{"path":"p","remote_url":"u","local_type":" added",)"
                  R"("remote_type":"x"}])"),
         " added"},
        {withHead(R"("conflicts":[{"path":"p","remote_url":"u","local_type":"added",)"
                  R"("remote_type":"moved"}])"),
         "moved"},
    };
    for (const auto& [file, code] : cases)
        EXPECT_EQ(loadOutcome(file), "returned: Unsupported file change enum: " + code) << file;
}

TEST(StateReader, TellsTheFirstOfSeveralErrors) {
    const std::string wrongChange = R"({"path":"p","file_change":"x"})";
    const std::string emptyConflict = R"("conflicts":[{}])";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"({"staged_files":1,"head":{}})", "returned: HEAD does not point to a branch"},
        {R"({"staged_files":1})", "returned: State does not contain HEAD."},
        {R"({"head":{"commit":1}})", "returned: HEAD does not point to a branch"},
        {R"({"head":{"commit":1,"reference":2}})",
         "JsonParseError: Error:\tExpected json type 'string', found 'int'\njson "
         "key:\t\"reference\""},
        {withHead(R"("conflicts":2,"index":2,"renames":2,"staged_files":[0])"),
         "returned: Encounterd 'object', found 'int. While parsing json vector.'"},
        {withHead(R"("conflicts":2,"index":2,"renames":[2])"),
         "returned: Encounterd 'object', found 'int. While parsing json map.'"},
        {withHead(R"("conflicts":[2],"index":2)"),
         "JsonParseError: Error:\tExpected json type 'array', found 'int'"
         "\nContext:\tindex\njson key:\t\"index\""},
        {withHead("\"staged_files\":[" + wrongChange + ",7," + wrongChange + "]"),
         "returned: Unsupported file change enum: x"},
        {withHead("\"staged_files\":[" + wrongChange + "]," + emptyConflict),
         "returned: Unsupported file change enum: x"},
        {withHead(R"("renames":[{}])"),
         "JsonParseError: Unable to find json key 'new'\njson key:\t\"new\""},
        {withHead(R"("index":[{}])"),
         "JsonParseError: Unable to find json key 'path'\njson key:\t\"path\""},
        {withHead(R"("index":[{"path":"p","data":{"modified":1}}])"),
         "JsonParseError: Unable to find json key 'last_checked'\njson key:\t\"last_checked\""},
        {withHead(emptyConflict),
         "JsonParseError: Unable to find json key 'path'\njson key:\t\"path\""},
        {withHead(R"("conflicts":[{"path":"p","remote_url":"u","local_type":"x"}])"),
         "returned: Unsupported file change enum: x"},
        {withHead(R"("conflicts":[{"path":"p","remote_url":"u","local_type":"added",)"
                  R"("remote_type":"x","handles":1}])"),
         "returned: Unsupported file change enum: x"},
    };
    for (const auto& [file, outcome] : cases)
        EXPECT_EQ(loadOutcome(file), outcome) << file;
}

}  // namespace
