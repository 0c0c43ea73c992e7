#include <tests/common/state/StateRepository.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

// Every member of the file, missing and with a value of every type that is not its own.

namespace {

using qrv_test::loadOutcome;

struct Kind {
    std::string name;
    std::string value;
};

const std::vector<Kind> kinds = {{"object", "{}"}, {"array", "[]"}, {"string", "\"x\""},
                                 {"bool", "true"}, {"int", "1"},    {"real", "1.5"},
                                 {"null", "null"}};

/// One member: a file in which "$" stands for it, and what is right for it.
struct Member {
    std::string file;
    std::string key;
    std::string kind;
    std::string context;
    std::string outcomeWhenMissing;
};

std::string missingKey(const std::string& key) {
    return "JsonParseError: Unable to find json key '" + key + "'\njson key:\t\"" + key + "\"";
}

Member headMember(const std::string& members, const std::string& key, const std::string& kind,
                  const std::string& outcomeWhenMissing) {
    return {R"({"head":{)" + members + "}}", key, kind, "", outcomeWhenMissing};
}

Member list(const std::string& key) {
    return {R"({"head":{"reference":"m"},$})", key, "array", key, "loaded"};
}

Member element(const std::string& listKey, const std::string& members, const std::string& key,
               const std::string& kind = "string") {
    return {R"({"head":{"reference":"m"},")" + listKey + R"(":[{)" + members + "}]}", key, kind, "",
            missingKey(key)};
}

Member optionalElement(const std::string& members, const std::string& key,
                       const std::string& kind) {
    Member member = element("conflicts", members, key, kind);
    member.outcomeWhenMissing = "loaded";
    return member;
}

Member handleList(const std::string& key) {
    return optionalElement(R"("path":"p","remote_url":"u","local_type":"added",)"
                           R"("remote_type":"added","handles":{$})",
                           key, "array");
}

const std::vector<Member>& members() {
    static const std::vector<Member> all = {
        {"{$}", "head", "object", "", "returned: State does not contain HEAD."},
        headMember("$", "reference", "string", "returned: HEAD does not point to a branch"),
        headMember(R"("reference":"m","commit":5,$)", "head", "int", missingKey("head")),
        list("staged_files"),
        list("renames"),
        list("index"),
        list("conflicts"),
        element("staged_files", R"($,"file_change":"added")", "path"),
        element("staged_files", R"("path":"p",$)", "file_change"),
        element("renames", R"($,"previous":"p")", "new"),
        element("renames", R"("new":"p",$)", "previous"),
        element("index", R"($,"data":{"last_checked":1,"modified":true})", "path"),
        element("index", R"("path":"p",$)", "data", "object"),
        element("index", R"("path":"p","data":{$,"modified":true})", "last_checked", "int"),
        element("index", R"("path":"p","data":{"last_checked":1,$})", "modified", "bool"),
        element("conflicts", R"($,"remote_url":"u","local_type":"added","remote_type":"added")",
                "path"),
        element("conflicts", R"("path":"p",$,"local_type":"added","remote_type":"added")",
                "remote_url"),
        element("conflicts", R"("path":"p","remote_url":"u",$,"remote_type":"added")",
                "local_type"),
        element("conflicts", R"("path":"p","remote_url":"u","local_type":"added",$)",
                "remote_type"),
        optionalElement(
            R"("path":"p","remote_url":"u","local_type":"added","remote_type":"added",$)",
            "handles", "object"),
        handleList("modified"),
        handleList("locally_removed"),
        handleList("remotely_removed"),
        handleList("modified_blocks"),
    };
    return all;
}

/// The member's file with `text` in its place.
std::string fileWith(const Member& member, const std::string& text) {
    std::string file = member.file;
    return file.replace(file.find('$'), 1, text);
}

TEST(StateReader, TakesEveryMemberOfItsOwnType) {
    for (const Member& member : members()) {
        for (const Kind& kind : kinds) {
            // An empty object is no head, and "x" no file change: those are told by their own
            // tests.
            const bool isComplete = member.key != "head" || member.kind != "object";
            if (kind.name != member.kind || !isComplete || member.key == "file_change" ||
                member.key.ends_with("_type") || member.key == "data")
                continue;
            const std::string file = fileWith(member, "\"" + member.key + "\":" + kind.value);
            EXPECT_EQ(loadOutcome(file), "loaded") << file;
        }
    }
}

TEST(StateReader, RefusesEveryMemberOfAnotherType) {
    for (const Member& member : members()) {
        for (const Kind& kind : kinds) {
            if (kind.name == member.kind)
                continue;
            const std::string file = fileWith(member, "\"" + member.key + "\":" + kind.value);
            std::string expected = "JsonParseError: Error:\tExpected json type '" + member.kind +
                                   "', found '" + kind.name + "'";
            if (!member.context.empty())
                expected += "\nContext:\t" + member.context;
            expected += "\njson key:\t\"" + member.key + "\"";
            EXPECT_EQ(loadOutcome(file), expected) << file;
        }
    }
}

TEST(StateReader, TellsEveryMissingMemberThatIsRequired) {
    for (const Member& member : members()) {
        const std::string file = fileWith(member, R"("unknown":0)");
        EXPECT_EQ(loadOutcome(file), member.outcomeWhenMissing) << file;
    }
}

TEST(StateReader, TakesNoMemberInAnotherLetterCase) {
    for (const Member& member : members()) {
        std::string key = member.key;
        key.front() = static_cast<char>(key.front() - 'a' + 'A');
        const std::string file = fileWith(member, "\"" + key + "\":null");
        EXPECT_EQ(loadOutcome(file), member.outcomeWhenMissing) << file;
    }
}

TEST(StateReader, RefusesEveryElementThatIsNoObject) {
    const std::vector<std::pair<std::string, std::string>> lists = {
        {"staged_files", "parsing json vector."},
        {"renames", "parsing json map."},
        {"index", "parsing json map."},
        {"conflicts", "parsing json vector."}};
    for (const auto& [key, context] : lists) {
        for (const Kind& kind : kinds) {
            if (kind.name == "object")
                continue;
            const std::string file =
                R"({"head":{"reference":"m"},")" + key + "\":[" + kind.value + "]}";
            EXPECT_EQ(loadOutcome(file), "returned: Encounterd 'object', found '" + kind.name +
                                             ". While " + context + "'")
                << file;
        }
    }
}

TEST(StateReader, RefusesEveryHandleThatIsNoString) {
    for (const std::string key :
         {"modified", "locally_removed", "remotely_removed", "modified_blocks"}) {
        for (const Kind& kind : kinds) {
            if (kind.name == "string")
                continue;
            const std::string file =
                fileWith(handleList(key), "\"" + key + "\":[\"1\"," + kind.value + "]");
            EXPECT_EQ(
                loadOutcome(file),
                "JsonParseError: Error:\tExpected json type 'string', found '" + kind.name + "'")
                << file;
        }
    }
}

TEST(StateReader, RefusesAFileThatIsNoObject) {
    for (const Kind& kind : kinds) {
        if (kind.name == "object")
            continue;
        EXPECT_EQ(loadOutcome(kind.value),
                  "JsonParseError: Error:\tExpected json type 'object', found '" + kind.name + "'")
            << kind.value;
    }
}

}  // namespace
