#include <common/json/Value.h>
#include <common/json/Writer.h>
#include <common/state/RowTextInternal.h>
#include <common/state/StateFile.h>
#include <tests/common/state/RandomStates.h>
#include <tests/common/state/StateRepository.h>
#include <tests/common/state/TreeWriter.h>

#include <gmock/gmock.h>

#include <limits>
#include <stdexcept>
#include <string>

namespace {

using common::RowText;
using common::State;
using qrv_test::RandomStates;
using qrv_test::StateRepository;
using qrv_test::treeWritten;

/// The bytes that writing `state` gives.
std::string written(const State& state, const StateRepository& repository) {
    EXPECT_TRUE(common::writeState(state, repository.root().statePath()));
    return repository.stateFileBytes();
}

/// The bytes of a document in which each unit in [begin, end) is a text of its own.
std::string unitsWritten(int begin, int end, const StateRepository& repository) {
    ut::TextFile file(repository.root().statePath());
    RowText text(file);
    text.openArray();
    for (int unit = begin; unit < end; ++unit) {
        text.element();
        text.string(OdString(std::wstring(1, static_cast<wchar_t>(unit))));
    }
    text.closeArray();
    text.finish();
    EXPECT_TRUE(file.write());
    return repository.stateFileBytes();
}

TEST(RowText, IsTheDocumentOfTheJsonWriter) {
    const StateRepository repository;
    ut::TextFile file(repository.root().statePath());
    RowText text(file);
    text.openObject();
    text.name(L"a");
    text.openArray();
    text.element();
    text.integer(std::numeric_limits<std::int64_t>::min());
    text.element();
    text.boolean(true);
    text.element();
    text.openObject();
    text.closeObject();
    text.closeArray();
    text.name(L"b");
    text.string(L"\u00E4 \"\n");
    text.name(L"c");
    text.boolean(false);
    text.closeObject();
    text.finish();
    ASSERT_TRUE(file.write());
    EXPECT_EQ(repository.stateFileBytes(),
              "{\n"
              "    \"a\" : [\n"
              "        -9223372036854775808,\n"
              "        true,\n"
              "        {\n"
              "        }\n"
              "    ],\n"
              "    \"b\" : \"\xC3\xA4 \\\"\\n\",\n"
              "    \"c\" : false\n"
              "}");
}

TEST(RowText, EscapesEachUnitAsTheJsonWriterDoes) {
    const StateRepository repository;
    jsonlib::json::Array units;
    for (int unit = 0; unit < 0x10000; ++unit)
        units.emplace_back(std::wstring(1, static_cast<wchar_t>(unit)));
    EXPECT_TRUE(unitsWritten(0, 0x10000, repository) ==
                OdString(jsonlib::json::write(std::move(units))).toNarrow());
}

TEST(RowText, OfAStateIsWhatTheJsonWriterMakesOfItsTree) {
    const StateRepository repository;
    RandomStates states;
    for (int run = 0; run < 200; ++run) {
        State state = states.next();
        if (run % 10 == 0)
            state.head.commit = run - 100;
        ASSERT_EQ(written(state, repository), treeWritten(state));
    }
}

// It goes into the file in parts, which end at different places of a row.
TEST(RowText, OfALargeStateIsWhatTheJsonWriterMakesOfItsTree) {
    const StateRepository repository;
    State state = qrv_test::fullState();
    for (int file = 0; file < 3000; ++file) {
        const std::wstring name = std::to_wstring(file) + std::wstring(file % 70, L'n');
        state.index[OdString(name)] = {file, file % 2 == 0};
        state.stagedFiles.emplace_back(OdString(name), common::FileChange::added);
        state.conflicts.insert(state.conflicts.end(), state.conflicts[1]);
        state.renames[OdString(name)] = OdString(std::wstring(file % 50, L'\u00E4'));
    }
    state.renames[L"long"] = OdString(std::wstring(100'000, L'l'));
    EXPECT_TRUE(written(state, repository) == treeWritten(state));
}

TEST(RowText, IsTheSameInPiecesAndAsOneLine) {
    const StateRepository repository;
    const auto bytes = [&repository](RowText::HandOver handOver) {
        ut::TextFile file(repository.root().statePath());
        RowText text(file, handOver);
        text.openArray();
        for (int count = 0; count < 1000; ++count) {
            text.element();
            text.string(L"element");
        }
        text.closeArray();
        text.finish();
        EXPECT_TRUE(file.write());
        return repository.stateFileBytes();
    };
    EXPECT_EQ(bytes(RowText::HandOver::asOneLine), bytes(RowText::HandOver::inPieces));
}

TEST(RowText, LongerThanCanBeReadAgainIsRefused) {
    const StateRepository repository;
    const auto write = [&repository](std::size_t limitUnits) {
        ut::TextFile file(repository.root().statePath());
        RowText text(file, RowText::HandOver::inPieces, limitUnits);
        text.openArray();
        for (int count = 0; count < 3; ++count) {
            text.element();
            text.string(OdString(std::wstring(50'000, L'x')));
        }
        text.closeArray();
        text.finish();
    };
    // The brackets, three lines of four blanks and two quotes, two commas, four line feeds.
    constexpr std::size_t length = 2 + 3 * (4 + 2 + 50'000) + 2 + 4;
    EXPECT_NO_THROW(write(length));
    EXPECT_THROW(write(length - 1), std::length_error);
}

}  // namespace
