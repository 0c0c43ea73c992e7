#include <common/json/RowTextInternal.h>
#include <common/json/Value.h>
#include <common/json/Writer.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <limits>
#include <stdexcept>
#include <string>

namespace {

using common::RowText;
using qrv_test::TemporaryFolder;

/// The bytes of a document in which each unit in [begin, end) is a text of its own.
std::string unitsWritten(int begin, int end, const TemporaryFolder& folder) {
    ut::TextFile file(folder.text("file"));
    RowText text(file);
    text.openArray();
    for (int unit = begin; unit < end; ++unit) {
        text.element();
        text.string(OdString(std::wstring(1, static_cast<wchar_t>(unit))));
    }
    text.closeArray();
    text.finish();
    EXPECT_TRUE(file.write());
    return qrv_test::readFile(folder / "file");
}

TEST(RowText, IsTheDocumentOfTheJsonWriter) {
    const TemporaryFolder folder;
    ut::TextFile file(folder.text("file"));
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
    EXPECT_EQ(qrv_test::readFile(folder / "file"),
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
    const TemporaryFolder folder;
    jsonlib::json::Array units;
    for (int unit = 0; unit < 0x10000; ++unit)
        units.emplace_back(std::wstring(1, static_cast<wchar_t>(unit)));
    EXPECT_TRUE(unitsWritten(0, 0x10000, folder) ==
                OdString(jsonlib::json::write(std::move(units))).toNarrow());
}

TEST(RowText, IsTheSameInPiecesAndAsOneLine) {
    const TemporaryFolder folder;
    const auto bytes = [&folder](RowText::HandOver handOver) {
        ut::TextFile file(folder.text("file"));
        RowText text(file, handOver);
        text.openArray();
        for (int count = 0; count < 1000; ++count) {
            text.element();
            text.string(L"element");
        }
        text.closeArray();
        text.finish();
        EXPECT_TRUE(file.write());
        return qrv_test::readFile(folder / "file");
    };
    EXPECT_EQ(bytes(RowText::HandOver::asOneLine), bytes(RowText::HandOver::inPieces));
}

TEST(RowText, LongerThanCanBeReadAgainIsRefused) {
    const TemporaryFolder folder;
    const auto write = [&folder](std::size_t limitUnits) {
        ut::TextFile file(folder.text("file"));
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
