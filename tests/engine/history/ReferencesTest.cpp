#include <tests/engine/history/Repository.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using common::RefType;
using qrv_test::Repository;

std::string shown(Repository& repository) {
    std::string text;
    for (const common::Reference& each : repository.history.references())
        text += (each.type == RefType::Branch ? "branch " : "tag ") + each.name.toNarrow() + " " +
                repository.history.commit(each.commitHash)->message.toNarrow() + ", ";
    return text;
}

TEST(References, AreBranchesAndThenTagsByName) {
    Repository repository;
    const OdString one = repository.add({}, "one");
    const OdString two = repository.add({one}, "two");
    auto& history = repository.history;
    EXPECT_EQ(shown(repository), "");
    history.setReference(L"v1", RefType::Tag, one);
    history.setReference(L"side", RefType::Branch, one);
    history.setReference(L"master", RefType::Branch, two);
    history.setReference(L"early", RefType::Tag, two);
    history.setReference(L"side", RefType::Tag, two);
    EXPECT_EQ(shown(repository),
              "branch master two, branch side one, tag early two, tag side two, tag v1 one, ");
}

TEST(References, AreMovedAndRemoved) {
    Repository repository;
    const OdString one = repository.add({}, "one");
    const OdString two = repository.add({one}, "two");
    auto& history = repository.history;
    history.setReference(L"master", RefType::Branch, one);
    history.setReference(L"master", RefType::Tag, one);
    history.setReference(L"master", RefType::Branch, two);
    EXPECT_EQ(history.reference(L"master", RefType::Branch), two);
    EXPECT_EQ(history.reference(L"master", RefType::Tag), one);
    history.removeReference(L"master", RefType::Branch);
    history.removeReference(L"none", RefType::Branch);
    EXPECT_EQ(history.reference(L"master", RefType::Branch), std::nullopt);
    EXPECT_EQ(history.reference(L"master", RefType::Tag), one);
}

TEST(References, NameOnlyWhatIsThere) {
    Repository repository;
    const OdString one = repository.add({}, "one");
    auto& history = repository.history;
    EXPECT_EQ(
        repository.complaint([&] { history.setReference(L"master", RefType::Branch, L"none"); }),
        "The history 'DB' has no commit 'none'");
    EXPECT_EQ(
        repository.complaint([&] { history.setReference(L"-x", RefType::Branch, one); }),
        "The history 'DB' cannot keep this: '-x' cannot be the name of a branch or tag: it begins "
        "like an option");
    EXPECT_EQ(shown(repository), "");
}

}  // namespace
