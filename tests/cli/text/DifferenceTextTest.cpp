#include <cli/text/DifferenceText.h>
#include <common/json/Writer.h>
#include <tests/engine/history/Repository.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using qrv::Difference;
using qrv::FileVersion;
using qrv::cli::differenceText;
using qrv::cli::sizeText;
using qrv_test::url;

const Difference added = {L"new\n.txt", {}, {}, FileVersion{url('a'), {}, 12}};
const Difference removed = {L"gone", {}, FileVersion{url('a'), {}, 7}, {}};
const Difference modified = {
    L"plan.dxf", {}, FileVersion{url('a'), {}, 12}, FileVersion{{}, L"b", 13}};
const Difference renamed = {L"b", L"a", FileVersion{url('a'), {}, 12},
                            FileVersion{url('a'), {}, 12}};
const Difference renamedAndModified = {L"b", L"a", FileVersion{url('a'), {}, 12},
                                       FileVersion{url('b'), {}, 12}};

TEST(DifferenceText, NamesTheChangeAndTheFile) {
    EXPECT_EQ(differenceText(added), L"  added     new\\x0A.txt");
    EXPECT_EQ(differenceText(removed), L"  removed   gone");
    EXPECT_EQ(differenceText(modified), L"  modified  plan.dxf");
    EXPECT_EQ(differenceText(renamed), L"  renamed   a -> b");
}

TEST(SizeText, TellsBothSizesOfContentsThatDiffer) {
    EXPECT_EQ(sizeText(added), L" (12 bytes)");
    EXPECT_EQ(sizeText(removed), L" (7 bytes)");
    EXPECT_EQ(sizeText(modified), L" (12 -> 13 bytes)");
    EXPECT_EQ(sizeText(renamed), L" (12 bytes)");
    EXPECT_EQ(sizeText(renamedAndModified), L" (12 -> 12 bytes)");
}

TEST(DifferencesAsJson, HaveTheSidesThatThereAre) {
    const std::string a(64, 'a');
    EXPECT_EQ(OdString(jsonlib::json::write(qrv::cli::toJson({added, removed, modified, renamed})))
                  .toNarrow(),
              R"([
    {
        "change" : "added",
        "digestAfter" : ")" +
                  a + R"(",
        "path" : "new\n.txt",
        "sizeAfter" : 12
    },
    {
        "change" : "removed",
        "digestBefore" : ")" +
                  a + R"(",
        "path" : "gone",
        "sizeBefore" : 7
    },
    {
        "change" : "modified",
        "digestAfter" : "b",
        "digestBefore" : ")" +
                  a + R"(",
        "path" : "plan.dxf",
        "sizeAfter" : 13,
        "sizeBefore" : 12
    },
    {
        "change" : "renamed",
        "digestAfter" : ")" +
                  a + R"(",
        "digestBefore" : ")" +
                  a + R"(",
        "path" : "b",
        "previousPath" : "a",
        "sizeAfter" : 12,
        "sizeBefore" : 12
    }
])");
}

}  // namespace
