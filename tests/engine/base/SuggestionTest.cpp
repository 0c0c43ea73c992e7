#include <engine/base/Suggestion.h>

#include <gtest/gtest.h>

#include <string>

namespace {

std::string suggestion(const std::string& word, const std::vector<std::string>& candidates) {
    std::vector<OdString> texts;
    for (const std::string& candidate : candidates)
        texts.push_back(OdString::fromNarrow(candidate));
    const std::optional<OdString> closest = qrv::closest(OdString::fromNarrow(word), texts);
    return closest ? closest->toNarrow() : "none";
}

TEST(Suggestion, ForgivesOneMistake) {
    for (const char* word : {"tag", "stag", "atg", "tga", "tagg", "ta", "tog", "TAG"}) {
        const bool isGuessed = std::string(word).size() > 2;
        EXPECT_EQ(suggestion(word, {"status", "tag"}), isGuessed ? "tag" : "none") << word;
    }
    for (const char* word : {"t", "gat", "stagg", "bags", ""})
        EXPECT_EQ(suggestion(word, {"status", "tag"}), "none") << word;
}

TEST(Suggestion, ForgivesTwoMistakesInLongerWords) {
    for (const char* word : {"comitt", "cmomti", "commitst", "Kommitt"})
        EXPECT_EQ(suggestion(word, {"add", "commit"}), "commit") << word;
    for (const char* word : {"comma", "omitttt", "kumitt", "timmoc"})
        EXPECT_EQ(suggestion(word, {"add", "commit"}), "none") << word;
}

TEST(Suggestion, IsTheOneWithTheFewestMistakesThenTheFirst) {
    EXPECT_EQ(suggestion("brunch", {"bunch", "branch", "brunches"}), "bunch");
    EXPECT_EQ(suggestion("branhc", {"brain", "bran", "branch"}), "branch");
    EXPECT_EQ(suggestion("MASTER", {"mastre", "master"}), "master");
    EXPECT_EQ(suggestion("head", {"beard", "HEAD"}), "HEAD");
}

TEST(Suggestion, ForAHugeWordComesAtOnce) {
    EXPECT_EQ(suggestion(std::string(1'000'000, 'x'), {"commit", ""}), "none");
    EXPECT_EQ(suggestion("commit", {}), "none");
}

}  // namespace
