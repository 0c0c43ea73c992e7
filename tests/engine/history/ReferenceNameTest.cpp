#include <engine/history/ReferenceName.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using qrv::checkedReferenceName;

std::string refusal(const std::string& name) {
    const Expected<OdString> checked = checkedReferenceName(OdString::fromNarrow(name));
    if (!checked)
        return checked.error().message.toNarrow();
    EXPECT_EQ(checked->toNarrow(), name);
    return "none";
}

TEST(ReferenceName, TakesNamesThatMeanNothingElse) {
    const std::string names[] = {"master",
                                 "v1.0",
                                 "feature/roof",
                                 "Gehäuse-2",
                                 "1a",
                                 "#a",
                                 "a#1",
                                 "head-start",
                                 "a.b",
                                 "x-",
                                 std::string(200, 'x'),
                                 "\U0001F4D0",
                                 "deadbeef",
                                 ".",
                                 std::string(63, 'a'),
                                 std::string(65, 'a')};
    for (const std::string& name : names)
        EXPECT_EQ(refusal(name), "none") << name;
}

TEST(ReferenceName, RefusesTheOthersWithAReason) {
    struct Case {
        std::string name;
        std::string shown;
        std::string reason;
    };
    const std::string blank = "it has a blank in it";
    const std::string unshowable = "it has a character in it that cannot be shown";
    const std::string number = "it could be the number of a commit";
    const std::string hash = "it could be the hash of a commit";
    const std::string dots = "it has two dots in a row";
    const std::string current = "it stands for the current commit";
    const std::string digits(64, 'a');
    const std::string capitals(64, 'F');
    const std::string tooLong(201, 'x');
    const Case cases[] = {
        {"", "", "it is empty"},
        {tooLong, tooLong, "it is longer than 200 characters"},
        {"a b", "a b", blank},
        {" a", " a", blank},
        {"a\u00A0b", "a\u00A0b", blank},
        {"a\u3000", "a\u3000", blank},
        {"a\u200Bb", "a\\u200Bb", blank},
        {"a\tb", "a\\x09b", unshowable},
        {"a\nb", "a\\x0Ab", unshowable},
        {"\x1B[2J", "\\x1B[2J", unshowable},
        {std::string("a\0b", 3), "a\\x00b", unshowable},
        {"a\xFF", "a\\xFF", unshowable},
        {"a\u202Eb", "a\\u202Eb", unshowable},
        {"-a", "-a", "it begins like an option"},
        {"-", "-", "it begins like an option"},
        {"1", "1", number},
        {"0123456789", "0123456789", number},
        {"#12", "#12", number},
        {"#", "#", number},
        {digits, digits, hash},
        {capitals, capitals, hash},
        {"a..b", "a..b", dots},
        {"..", "..", dots},
        {"HEAD", "HEAD", current},
        {"Head", "Head", current},
    };
    for (const Case& each : cases)
        EXPECT_EQ(refusal(each.name),
                  "'" + each.shown + "' cannot be the name of a branch or tag: " + each.reason)
            << each.name;
}

}  // namespace
