#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using qrv_test::contentsOf;
using qrv_test::Outcome;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

const std::vector<std::string> kinds = {
    "init-data",     "server-version", "repository",    "repositories", "reference",
    "references",    "annotation",     "parent-hashes", "repo-file",    "commit",
    "commit-number", "commit-numbers", "fetch"};

/// Reads records from a file.
class ConvertCommand : public testing::Test {
protected:
    Outcome convert(const std::string& kind, const std::string& record) const {
        writeFile(folder / "record", record);
        return runQrv(folder.path(), {"convert", kind, "record"});
    }

    const TemporaryFolder folder;
};

struct Case {
    std::string kind;
    std::string record;
    std::string printed;
};

const Case smallRecords[] = {
    {"init-data", R"({"id": "17", "more": 1})", R"({
    "id" : "17"
}
)"},
    {"server-version", R"({"commandVersion": "1.2"})", R"({
    "commandVersion" : "1.2"
}
)"},
    {"repository", R"({"name": "B\u00fcro", "id": "17", "description": "x"})", R"({
    "id" : "17",
    "name" : "Büro"
}
)"},
    {"repositories", R"([{"name": "a", "id": "1"}, {"name": "b", "id": "2"}])", R"([
    {
        "id" : "1",
        "name" : "a"
    },
    {
        "id" : "2",
        "name" : "b"
    }
]
)"},
    {"reference", R"({"refType": "tag", "name": "v1", "commitHash": "c1"})", R"({
    "commitHash" : "c1",
    "name" : "v1",
    "refType" : "tag"
}
)"},
    {"references", R"([{"refType": "branch", "name": "master", "commitHash": "c2"}])", R"([
    {
        "commitHash" : "c2",
        "name" : "master",
        "refType" : "branch"
    }
]
)"},
    {"parent-hashes", R"(["c1", "c2"])", R"([
    "c1",
    "c2"
]
)"},
    {"repo-file", R"({"path": "a.txt", "storagePath": "po:1", "previousPath": null})", R"({
    "path" : "a.txt",
    "storagePath" : "po:1"
}
)"},
    {"repo-file", R"({"path": "a", "storagePath": "tf:a#1", "previousPath": "b\u001b"})", R"({
    "path" : "a",
    "previousPath" : "b\u001B",
    "storagePath" : "tf:a#1"
}
)"},
    {"commit-number", R"({"hash": "c1", "commitNo": -1})", R"({
    "commitNo" : 18446744073709551615,
    "hash" : "c1"
}
)"},
    {"commit-numbers", R"([{"hash": "c1", "commitNo": 1}])", R"([
    {
        "commitNo" : 1,
        "hash" : "c1"
    }
]
)"},
};

TEST_F(ConvertCommand, PrintsWhatTheReaderTookFromTheRecord) {
    for (const Case& each : smallRecords)
        EXPECT_EQ(convert(each.kind, each.record), (Outcome{0, each.printed, ""})) << each.kind;
}

TEST_F(ConvertCommand, PrintsCommits) {
    const std::string commit = R"({"hash": "c1", "commitNo": 3, "parentsHashes": ["c0"],
        "annotation": {"author": "ada", "date": 1709734029500.25, "message": "T\u00fcren"},
        "files": [{"path": "a", "storagePath": "po:1", "previousPath": "b"}]})";
    EXPECT_EQ(convert("commit", commit), (Outcome{0,
                                                  R"({
    "annotation" : {
        "author" : "ada",
        "date" : "2024-03-06T14:07:09.500Z",
        "dateMs" : 1709734029500,
        "message" : "Türen"
    },
    "commitNo" : 3,
    "files" : [
        {
            "path" : "a",
            "previousPath" : "b",
            "storagePath" : "po:1"
        }
    ],
    "hash" : "c1",
    "parentsHashes" : [
        "c0"
    ]
}
)",
                                                  ""}));
}

TEST_F(ConvertCommand, PrintsTheResultOfAFetch) {
    const std::string fetch = R"({"repository": {"name": "a", "id": "1"},
        "references": [{"refType": "branch", "name": "master", "commitHash": "c1"}],
        "commits": [{"hash": "c1", "commitNo": 3, "annotation": {"author": "", "date": 0.0},
                     "files": []}]})";
    EXPECT_EQ(convert("fetch", fetch), (Outcome{0,
                                                R"({
    "commits" : [
        {
            "annotation" : {
                "author" : "",
                "date" : "1970-01-01T00:00:00.000Z",
                "dateMs" : 0,
                "message" : ""
            },
            "commitNo" : 3,
            "files" : [
            ],
            "hash" : "c1",
            "parentsHashes" : [
            ]
        }
    ],
    "references" : [
        {
            "commitHash" : "c1",
            "name" : "master",
            "refType" : "branch"
        }
    ],
    "repository" : {
        "id" : "1",
        "name" : "a"
    }
}
)",
                                                ""}));
}

TEST_F(ConvertCommand, PrintsEveryDateWithoutALoss) {
    struct Date {
        std::string read;
        std::string text;
        std::string milliseconds;
    };
    const Date dates[] = {
        {"1.0", "1970-01-01T00:00:00.001Z", "1"},
        {"12.9", "1970-01-01T00:00:00.012Z", "12"},
        {"-1.0", "1969-12-31T23:59:59.999Z", "-1"},
        {"9007199254740993.0", "287396-10-12T08:59:00.992Z", "9007199254740992"},
        {"1e300", "292278994-08-17T07:12:55.807Z", "9223372036854775807"},
        {"-1e300", "-292275055-05-16T16:47:04.192Z", "-9223372036854775808"},
    };
    for (const Date& date : dates)
        EXPECT_EQ(convert("annotation", R"({"author": "a", "date": )" + date.read + "}"),
                  (Outcome{0,
                           "{\n    \"author\" : \"a\",\n    \"date\" : \"" + date.text +
                               "\",\n    \"dateMs\" : " + date.milliseconds +
                               ",\n    \"message\" : \"\"\n}\n",
                           ""}));
}

TEST_F(ConvertCommand, ReadsStandardInput) {
    const Outcome expected = {0, "{\n    \"id\" : \"ä\"\n}\n", ""};
    const std::string record = R"(printf '\357\273\277{"id": "ä"}' | "$QRV" convert init-data)";
    EXPECT_EQ(runShell(folder.path(), record), expected);
    EXPECT_EQ(runShell(folder.path(), record + " -"), expected);
    EXPECT_EQ(convert("init-data", "\xEF\xBB\xBF{\"id\": \"ä\"}"), expected);
}

TEST_F(ConvertCommand, ReadsStandardInputOfAnyLength) {
    const std::string text(200000, 'x');
    writeFile(folder / "record", "{\"id\": \"" + text + "\"}");
    EXPECT_EQ(runShell(folder.path(), "cat record | \"$QRV\" convert init-data"),
              (Outcome{0, "{\n    \"id\" : \"" + text + "\"\n}\n", ""}));
}

TEST_F(ConvertCommand, TellsTheReadersError) {
    const Case cases[] = {
        {"init-data", "{}", "Could not parse init data, missing \"id\""},
        {"server-version", "{}", "Could not parse server version, missing \"commandVersion\""},
        {"repository", "{}", "Could not parse repo data, missing \"name\""},
        {"repositories", "[1]", "Encounterd 'object', found 'int. While parsing json vector.'"},
        {"reference", "{}", "No commit hash found in reference."},
        {"references", R"([{"refType": "\u001b", "name": "", "commitHash": ""}])",
         "Unsupported type: \\x1B"},
        {"annotation", "{}", "Could not parse annotation, missing \"author\""},
        {"annotation", R"({"author": "a", "date": 1})",
         "Error: Expected json type 'real', found 'int'; json key: \"date\""},
        {"parent-hashes", "[1]", "Could not parse parent hash, int type found."},
        {"repo-file", "{}", "Could not parse repo file, missing \"storagePath\""},
        {"commit", "{}", "Unable to find json key 'annotation'; json key: \"annotation\""},
        {"commit-number", "{}", "Could not parse commit number, missing \"hash\""},
        {"commit-numbers", "[{}]", "Could not parse commit number, missing \"hash\""},
        {"fetch", "{}", "Could not parse fetch data, missing \"repository\""},
    };
    for (const Case& each : cases)
        EXPECT_EQ(convert(each.kind, each.record), (Outcome{1, "", "qrv: " + each.printed + "\n"}))
            << each.kind << " " << each.record;
}

TEST_F(ConvertCommand, TellsWhatIsNoRecordAtAll) {
    const std::string deep(100000, '[');
    for (const std::string& kind : kinds) {
        const bool isList = kind.ends_with("s");
        const std::string expected = isList ? "array" : "object";
        for (const std::string& record : {std::string(), std::string("no JSON"), deep})
            EXPECT_EQ(convert(kind, record), (Outcome{1, "",
                                                      "qrv: Error: Expected json type '" +
                                                          expected + "', found 'null'\n"}))
                << kind;
        EXPECT_EQ(
            convert(kind, "17"),
            (Outcome{1, "", "qrv: Error: Expected json type '" + expected + "', found 'int'\n"}))
            << kind;
        EXPECT_EQ(convert(kind, "[{\"id\": \"cut of"),
                  (Outcome{1, "", "qrv: The record ends in the middle of a text\n"}))
            << kind;
    }
}

TEST_F(ConvertCommand, TellsWhyTheInputCannotBeRead) {
    EXPECT_EQ(
        runQrv(folder.path(), {"convert", "fetch", "missing\x1B"}),
        (Outcome{1, "", "qrv: Unable to read file 'missing\\x1B': No such file or directory\n"}));
    EXPECT_EQ(runQrv(folder.path(), {"convert", "fetch", "."}),
              (Outcome{1, "", "qrv: Unable to read file '.': Is a directory\n"}));
    EXPECT_EQ(runShell(folder.path(), "\"$QRV\" convert fetch <&-"),
              (Outcome{1, "", "qrv: Standard input cannot be read: Bad file descriptor\n"}));
    EXPECT_EQ(runShell(folder.path(), "\"$QRV\" convert fetch <."),
              (Outcome{1, "", "qrv: Standard input cannot be read: Is a directory\n"}));
}

TEST_F(ConvertCommand, RefusesAnUnknownKindAndListsThose) {
    std::string known;
    for (const std::string& kind : kinds)
        known += (known.empty() ? "" : ", ") + kind;
    EXPECT_EQ(runQrv(folder.path(), {"convert", "\x1B", "-"}),
              (Outcome{2, "",
                       "qrv: RECORD: '\\x1B' is no kind of record; there are: " + known +
                           " (see qrv --help)\n"}));
    EXPECT_EQ(runQrv(folder.path(), {"convert", "--help"}),
              (Outcome{0,
                       "Read a record of the server and print it as JSON\n"
                       "Usage: qrv convert [OPTIONS] RECORD [FILE]\n"
                       "\n"
                       "Arguments:\n"
                       "  RECORD (required)           The kind of record: " +
                           known +
                           "\n"
                           "  FILE                        The record's file (default: -, standard "
                           "input)\n"
                           "\n"
                           "Options:\n"
                           "  -h,--help                   Print this help message and exit\n"
                           "\n",
                       ""}));
}

}  // namespace
