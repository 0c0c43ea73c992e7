#include <engine/history/CommitName.h>
#include <tests/engine/history/Repository.h>

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

using common::RefType;
using qrv_test::newCommit;
using qrv_test::Repository;

struct Named : Repository {
    OdString first = add({}, "first");
    OdString second = add({first}, "second");

    Named() {
        history.setReference(L"master", RefType::Branch, second);
        history.setReference(L"v1", RefType::Tag, first);
    }

    /// The message of the commit, or the error.
    std::string find(const std::string& name, const char* currentBranch = "master") {
        const Expected<OdString> hash =
            findCommit(history, OdString::fromNarrow(name), OdString(currentBranch));
        return hash ? history.commit(*hash)->message.toNarrow() : hash.error().message.toNarrow();
    }
};

TEST(CommitName, IsAReferenceANumberOrAHash) {
    Named named;
    EXPECT_EQ(named.find("HEAD"), "second");
    EXPECT_EQ(named.find("master"), "second");
    EXPECT_EQ(named.find("v1"), "first");
    EXPECT_EQ(named.find("1"), "first");
    EXPECT_EQ(named.find("#2"), "second");
    EXPECT_EQ(named.find("002"), "second");
    const OdString hash = named.first;
    for (const int length : {4, 7, 63, 64})
        EXPECT_EQ(named.find(hash.left(length).toNarrow()), "first") << length;
    EXPECT_EQ(named.find(OdString(hash).makeUpper().toNarrow()), "first");
}

TEST(CommitName, IsABranchBeforeATagBeforeANumberBeforeAHash) {
    Named named;
    named.history.setReference(L"v1", RefType::Branch, named.second);
    EXPECT_EQ(named.find("v1"), "second");
    // A branch may be called like the begin of a hash.
    const OdString digits = L"a" + named.first.left(7);
    named.history.setReference(digits, RefType::Tag, named.second);
    EXPECT_EQ(named.find(digits.toNarrow()), "second");
}

TEST(CommitName, OfDigitsIsANumberFirst) {
    Repository repository;
    // The first four digits of some hash are all decimal, and no number yet.
    OdString hash;
    int count = 0;
    qrv::DatabaseTransaction transaction(repository.history.database());
    while (hash.isEmpty()) {
        const OdString next = repository.add({}, std::to_string(++count).c_str());
        const std::string begin = next.left(4).toNarrow();
        if (begin.find_first_not_of("0123456789") == std::string::npos && std::stoi(begin) > count)
            hash = next;
    }
    transaction.commit();
    const Expected<OdString> found = findCommit(repository.history, hash.left(4), L"master");
    EXPECT_EQ(found.value(), hash);

    // Now a commit has that number.
    repository.tamper(("INSERT INTO commits VALUES (" + hash.left(4).toNarrow() + ", '" +
                       std::string(64, '0') + "', '', '', 0)")
                          .c_str());
    const Expected<OdString> numbered = findCommit(repository.history, hash.left(4), L"master");
    EXPECT_EQ(numbered.value().toNarrow(), std::string(64, '0'));
}

TEST(CommitName, ThatIsUnknownIsToldSo) {
    Named named;
    const std::string hash = named.first.toNarrow();
    const std::string notHash = (hash[0] == 'a' ? "b" : "a") + hash.substr(1);
    for (const std::string& name :
         {std::string("other"), std::string("3"), std::string("#3"), std::string("0"),
          hash.substr(0, 3), notHash, hash + "0", std::string("99999999999999999999"),
          std::string("#"), std::string("-1"), "#" + hash})
        EXPECT_EQ(named.find(name), "There is no commit, branch or tag '" + name + "'");
    EXPECT_EQ(named.find(""), "There is no commit, branch or tag ''");
    EXPECT_EQ(named.find("\x1B[2J"), "There is no commit, branch or tag '\\x1B[2J'");
}

TEST(CommitName, ThatIsSpelledNearlyRightIsAskedBack) {
    Named named;
    EXPECT_EQ(named.find("mastre"),
              "There is no commit, branch or tag 'mastre' (did you mean 'master'?)");
    EXPECT_EQ(named.find("Master"),
              "There is no commit, branch or tag 'Master' (did you mean 'master'?)");
    EXPECT_EQ(named.find("head"),
              "There is no commit, branch or tag 'head' (did you mean 'HEAD'?)");
}

TEST(CommitName, HeadOfABranchWithoutCommitsIsNone) {
    Named named;
    EXPECT_EQ(named.find("HEAD", "side"), "There is no commit yet on the branch 'side'");
}

TEST(CommitName, ThatCouldMeanTwoCommitsIsRefused) {
    Named named;
    named.tamper(
        "INSERT INTO commits VALUES "
        "(10, 'abcd0000000000010000000000000000000000000000000000000000000000ab', '', 'ten', 0),"
        "(11, 'abcd0000000000020000000000000000000000000000000000000000000000ab', '', 'eleven', 0),"
        "(12, 'abcdf000000000020000000000000000000000000000000000000000000000ab', '', 'twelve', "
        "0)");
    EXPECT_EQ(named.find("abcd0"),
              "'abcd0' could be the commits abcd000000000001 and abcd000000000002");
    EXPECT_EQ(named.find("ABCD"),
              "'ABCD' could be the commits abcd000000000001 and abcd000000000002");
    named.tamper("DELETE FROM commits WHERE number = 11");
    EXPECT_EQ(named.find("abcd"), "'abcd' could be the commits abcd00000000 and abcdf0000000");
    EXPECT_EQ(named.find("abcdf"), "twelve");
}

}  // namespace
