#include <cli/text/DifferenceText.h>
#include <common/json/Writer.h>
#include <tests/engine/history/Repository.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using qrv::Difference;
using qrv::TreeFile;
using qrv::cli::differenceText;
using qrv::cli::sizeText;
using qrv_test::url;

const Difference added = {L"new\n.txt", {}, {}, TreeFile{url('a'), 12}};
const Difference removed = {L"gone", {}, TreeFile{url('a'), 7}, {}};
const Difference modified = {L"plan.dxf", {}, TreeFile{url('a'), 12}, TreeFile{L"b", 13}};
const Difference renamed = {L"b", L"a", TreeFile{url('a'), 12}, TreeFile{url('a'), 12}};
const Difference renamedAndModified = {L"b", L"a", TreeFile{url('a'), 12}, TreeFile{url('b'), 12}};

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
