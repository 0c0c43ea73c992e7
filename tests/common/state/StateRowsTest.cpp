#include <common/state/StateRowsInternal.h>
#include <tests/common/state/RandomStates.h>
#include <tests/common/state/StateRepository.h>
#include <tests/common/state/TreeWriter.h>
#include <tests/support/Effort.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using common::FileChange;
using common::readRows;
using common::State;
using qrv_test::RandomStates;
using qrv_test::StateRepository;
using qrv_test::stateSample;
using qrv_test::treeWritten;
using testing::ElementsAre;
using testing::Pair;

/// Behind a byte-order mark, which is no part of the text, nothing is read row by row.
const std::string mark = "\xEF\xBB\xBF";

/// The state that the general reader makes of these bytes.
State treeRead(const StateRepository& repository, const std::string& bytes) {
    repository.writeStateFile(mark + bytes);
    return qrv_test::load(repository);
}

/// A file of a valid head and further members.
std::string withHead(const std::string& members) {
    return R"({"head":{"reference":"m"},)" + members + "}";
}

std::string withTime(const std::string& number) {
    return withHead(R"("index":[{"path":"p","data":{"last_checked":)" + number +
                    R"(,"modified":true}}])");
}

TEST(StateRows, AreReadFromTheSamples) {
    EXPECT_EQ(readRows(stateSample("default")), State());
    EXPECT_EQ(readRows(stateSample("full")), qrv_test::fullState());
}

TEST(StateRows, AreReadWhateverTheWhiteSpaceAndTheOrderOfMembers) {
    State expected;
    expected.head.reference = L"m";
    expected.index = {{L"a", {-5, false}}, {L"b", {7, true}}};
    const std::string head = R"("head":{"reference":"m"})";
    const std::string index =
        R"("index":[{"path":"a","data":{"last_checked":-5,"modified":false}},)"
        R"({"data":{"modified":true,"last_checked":7},"path":"b"}])";
    EXPECT_EQ(readRows("{" + head + "," + index + "}"), expected);
    EXPECT_EQ(readRows(" \t\n\v\f\r{" + index + "\n,\r" + head + "\f} what follows"), expected);
    EXPECT_EQ(
        readRows(std::string(100, ' ') + "{" + head + std::string(9, ' ') + "," + index + "}"),
        expected);
}

TEST(StateRows, AreReadWithTextsOfAllKinds) {
    const std::array<std::pair<std::string, std::wstring>, 9> texts = {{
        {"", L""},
        {"plain", L"plain"},
        {"\xC3\xA4", L"\u00E4"},
        {"\xF0\x9F\x98\x80", L"\xD83D\xDE00"},
        {"\xFF\xC3", L"\xDCFF\xDCC3"},
        {R"(\"\\\/\b\f\n\r\t)", L"\"\\/\b\f\n\r\t"},
        {R"(x\u00e4\uD83D\uDE00y)", L"x\u00E4\xD83D\xDE00y"},
        {"\xFF\\n\xC3", L"\xDCFF\n\xDCC3"},
        {"raw\n\x01", L"raw\n\x01"},
    }};
    for (const auto& [written, meant] : texts) {
        State expected;
        expected.head.reference = OdString(meant);
        EXPECT_EQ(readRows(R"({"head":{"reference":")" + written + "\"}}"), expected) << written;
    }
}

TEST(StateRows, AreReadWithIntegersOfAllSixtyFourBits) {
    const auto timeOf = [](const std::string& number) {
        return readRows(withTime(number)).value().index.at(L"p").lastChecked;
    };
    EXPECT_EQ(timeOf("0"), 0);
    EXPECT_EQ(timeOf("-0"), 0);
    EXPECT_EQ(timeOf("10"), 10);
    EXPECT_EQ(timeOf("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(timeOf("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
}

TEST(StateRows, OfEqualPathsGiveTheFirst) {
    const std::optional<State> state =
        readRows(withHead(R"("renames":[{"new":"b","previous":"1"},{"new":"a","previous":"2"},)"
                          R"({"new":"b","previous":"3"}],)"
                          R"("index":[{"path":"b","data":{"last_checked":1,"modified":true}},)"
                          R"({"path":"a","data":{"last_checked":2,"modified":true}},)"
                          R"({"path":"b","data":{"last_checked":3,"modified":true}}])"));
    ASSERT_TRUE(state);
    EXPECT_THAT(state->renames, ElementsAre(Pair(OdString(L"a"), OdString(L"2")),
                                            Pair(OdString(L"b"), OdString(L"1"))));
    EXPECT_THAT(state->index, ElementsAre(Pair(OdString(L"a"), common::IndexData{2, true}),
                                          Pair(OdString(L"b"), common::IndexData{1, true})));
}

TEST(StateRows, AreNotReadFromWhatIsNotWrittenThePlainWay) {
    const std::vector<std::string> texts = {
        "",
        " ",
        mark + stateSample("default"),
        "[]",
        "{}",
        R"({"head":{}})",
        R"({"head":{"reference":1}})",
        R"({"head":{"reference":"m)",
        R"({"head":{"reference":"m\)",
        R"({"head":{"reference":"m\")",
        R"({"head":{"reference":"\x"}})",
        R"({"head":{"reference":"\u12"}})",
        R"({"head":{"reference":"m"})",
        R"({"head":{"reference":"m"},})",
        R"({"head":{"reference":"m",}})",
        R"({"head":{"reference":"m","commit":1,"head":1}})",
        R"({"head":{"reference":"m","other":1}})",
        R"({"head":{"reference":"m","reference":"m"}})",
        R"({"h\u0065ad":{"reference":"m"}})",
        R"({"head" {"reference":"m"}})",
        R"({"head":{"reference":"m"} "index":[]})",
    };
    for (const std::string& text : texts)
        EXPECT_EQ(readRows(text), std::nullopt) << text;
}

TEST(StateRows, AreNotReadFromListsWithAnythingUnusual) {
    const std::vector<std::string> texts = {
        withHead(R"("head":{"reference":"m"})"),
        withHead(R"("other":1)"),
        withHead(R"("index":[])"),
        withHead(R"("index":{})"),
        withHead(R"("index":[1])"),
        withHead(R"("index":[{"path":"p"}])"),
        withHead(R"("index":[{"data":{"last_checked":1,"modified":true}}])"),
        withHead(R"("index":[{"path":"p","data":{"last_checked":1}}])"),
        withHead(R"("index":[{"path":"p","data":{"modified":true}}])"),
        withHead(R"("index":[{"path":"p","data":{"last_checked":1,"modified":1}}])"),
        withHead(R"("index":[{"path":"p","data":{"last_checked":1,"modified":truex}}])"),
        withHead(R"("index":[{"path":"p","data":{"last_checked":1,"modified":True}}])"),
        withTime(""),
        withTime("-"),
        withTime("+1"),
        withTime("01"),
        withTime("-01"),
        withTime("1.0"),
        withTime("1."),
        withTime("1e1"),
        withTime("9223372036854775808"),
        withTime("-9223372036854775809"),
        withTime("null"),
        withHead(R"("staged_files":[{"path":"p"}])"),
        withHead(R"("staged_files":[{"path":"p","file_change":"Added"}])"),
        withHead(R"("staged_files":[{"path":"p","file_change":0}])"),
        withHead(R"("renames":[{"new":"p"}])"),
        withHead(R"("renames":[{"new":"p","previous":"q","other":1}])"),
        withHead(R"("conflicts":[{"path":"p","remote_url":"u","local_type":"added"}])"),
        withHead(R"("conflicts":[{"path":"p","remote_url":"u","local_type":"added",)"
                 R"("remote_type":"x"}])"),
        withHead(R"("conflicts":[{"path":"p","remote_url":"u","local_type":"added",)"
                 R"("remote_type":"added","handles":{"modified":[1]}}])"),
        withHead(R"("conflicts":[{"path":"p","remote_url":"u","local_type":"added",)"
                 R"("remote_type":"added","handles":{"other":["1"]}}])"),
    };
    for (const std::string& text : texts)
        EXPECT_EQ(readRows(text), std::nullopt) << text;
}

TEST(StateRows, AreReadFromEveryStateThatIsWritten) {
    RandomStates states;
    for (int run = 0; run < 2000; ++run) {
        const State state = states.next();
        const std::string text = treeWritten(state);
        ASSERT_EQ(readRows(text), state) << text;
    }
}

/// A small change somewhere in the text: now and then it stays a state, and mostly it does not.
void damage(std::string& text, RandomStates& random) {
    const std::array<std::string, 16> pieces = {"\"", "\\", "\\u00e4", "{",   "}",    "[",
                                                "]",  ",",  ":",       " ",   "\n\v", "0",
                                                "-",  "1e", "\xC3",    "true"};
    const auto anywhere = [&] {
        return static_cast<std::size_t>(random.below(static_cast<int>(text.size())));
    };
    const std::size_t place = anywhere();
    switch (random.below(4)) {
        case 0:
            text.erase(place, static_cast<std::size_t>(1 + random.below(3)));
            break;
        case 1:
            text.insert(place, pieces.at(static_cast<std::size_t>(random.below(pieces.size()))));
            break;
        case 2:
            text[place] = static_cast<char>(random.below(256));
            break;
        default:
            text.insert(anywhere(), text.substr(place, static_cast<std::size_t>(random.below(80))));
    }
}

TEST(StateRows, OfADamagedFileAreWhatTheGeneralReaderMakesOfIt) {
    const StateRepository repository;
    RandomStates states;
    std::size_t taken = 0;
    std::size_t left = 0;
    const int runs = qrv_test::isExhaustive() ? 10'000 : 4'000;
    for (int run = 0; run < runs; ++run) {
        std::string text = run % 4 == 0 ? stateSample("full") : treeWritten(states.next());
        for (int count = states.below(3); count >= 0; --count)
            damage(text, states);
        const std::optional<State> rows = readRows(text);
        ++(rows ? taken : left);
        if (rows) {
            ASSERT_TRUE(*rows == treeRead(repository, text)) << text;
        }
    }
    EXPECT_GT(taken, static_cast<std::size_t>(runs) / 20);
    EXPECT_GT(left, static_cast<std::size_t>(runs) / 10);
    qrv_test::tellTried(taken + left, "damaged inputs");
}

}  // namespace
