#include <engine/base/Printable.h>
#include <engine/base/Suggestion.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitName.h>
#include <engine/history/ReferenceName.h>
#include <engine/operations/NamedReferencesInternal.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/repository/LogEntry.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

using common::RefType;

/// What is said of a branch, or of a tag.
struct Words {
    const wchar_t* isThere;
    const wchar_t* isNotThere;
    const wchar_t* made;
    const wchar_t* deleted;
};

const Words& wordsOf(RefType type) {
    static constexpr Words ofBranch = {translatable(L"There is a branch '%ls' already"),
                                       translatable(L"There is no branch '%ls'"), L"branch ",
                                       L"deleted the branch "};
    static constexpr Words ofTag = {translatable(L"There is a tag '%ls' already"),
                                    translatable(L"There is no tag '%ls'"), L"tag ",
                                    L"deleted the tag "};
    return type == RefType::Branch ? ofBranch : ofTag;
}

bool isCurrentBranch(const Repository& repository, RefType type, const OdString& name) {
    return type == RefType::Branch && name == repository.branch();
}

std::vector<OdString> namesOf(History& history, RefType type) {
    std::vector<OdString> names;
    for (const common::Reference& reference : history.references()) {
        if (reference.type == type)
            names.push_back(reference.name);
    }
    return names;
}

/// Whether another branch or a tag stands for the commit, or for one that builds on it.
bool isHeldElsewhere(History& history, const OdString& branch, const OdString& commit) {
    const std::vector<common::Reference> references = history.references();
    return std::any_of(references.begin(), references.end(), [&](const auto& reference) {
        const bool isItself = reference.type == RefType::Branch && reference.name == branch;
        return !isItself && history.buildsOn(reference.commitHash, commit);
    });
}

void logReference(const wchar_t* what, const OdString& name, Repository& repository) {
    logEvent(OdString(what) + quotedName(name), repository.root(), repository.folder(),
             repository.caller());
}

}  // namespace

ErrorMessage withNearName(OdString text, History& history, RefType type, const OdString& name) {
    if (const auto meant = closest(name, namesOf(history, type)))
        text += OdString::format(tr(L"; did you mean '%ls'?"), printable(*meant));
    return {std::move(text)};
}

std::vector<NamedReference> listReferences(Repository& repository, RefType type) {
    History& history = repository.history();
    std::vector<OdString> names = namesOf(history, type);
    if (type == RefType::Branch) {
        const auto place = std::lower_bound(names.begin(), names.end(), repository.branch());
        if (place == names.end() || *place != repository.branch())
            names.insert(place, repository.branch());
    }
    std::vector<NamedReference> references;
    for (const OdString& name : names) {
        NamedReference reference = {name, std::nullopt, isCurrentBranch(repository, type, name)};
        if (const auto hash = history.reference(name, type))
            reference.commit = history.commit(*hash);
        references.push_back(std::move(reference));
    }
    return references;
}

Expected<CommitEntry> makeReference(Repository& repository, const MakeReference& wish) {
    if (const Expected<OdString> valid = checkedReferenceName(wish.name); !valid)
        return valid.error();
    History& history = repository.history();
    if (isCurrentBranch(repository, wish.type, wish.name) ||
        history.reference(wish.name, wish.type))
        return ErrorMessage{OdString::format(tr(wordsOf(wish.type).isThere), printable(wish.name))};
    const Expected<OdString> commit = findCommit(history, wish.commit, repository.branch());
    if (!commit)
        return commit.error();
    history.setReference(wish.name, wish.type, *commit);
    logReference(wordsOf(wish.type).made, wish.name, repository);
    return history.commit(*commit).value();
}

Expected<CommitEntry> deleteReference(Repository& repository, const DeleteReference& wish) {
    History& history = repository.history();
    if (isCurrentBranch(repository, wish.type, wish.name))
        return ErrorMessage{
            OdString::format(tr(L"'%ls' is the current branch (qrv switch goes to another one)"),
                             printable(wish.name))};
    const std::optional<OdString> commit = history.reference(wish.name, wish.type);
    if (!commit)
        return withNearName(
            OdString::format(tr(wordsOf(wish.type).isNotThere), printable(wish.name)), history,
            wish.type, wish.name);
    if (wish.type == RefType::Branch && !wish.force &&
        !isHeldElsewhere(history, wish.name, *commit))
        return ErrorMessage{OdString::format(
            tr(L"'%ls' has commits that are in no other branch or tag (--force deletes it all the "
               L"same)"),
            printable(wish.name))};
    CommitEntry named = history.commit(*commit).value();
    history.removeReference(wish.name, wish.type);
    logReference(wordsOf(wish.type).deleted, wish.name, repository);
    return named;
}

Expected<std::vector<NamedReference>> listReferences(const std::string& folder, RefType type,
                                                     Caller& caller) {
    using Listed = Expected<std::vector<NamedReference>>;
    return withRepository(folder, Repository::Use::look, caller,
                          [&](WorkingTree& workingTree) -> Listed {
                              return listReferences(workingTree.repository(), type);
                          });
}

Expected<CommitEntry> makeReference(const std::string& folder, const MakeReference& wish,
                                    Caller& caller) {
    return withRepository(folder, Repository::Use::change, caller, [&](WorkingTree& workingTree) {
        return makeReference(workingTree.repository(), wish);
    });
}

Expected<CommitEntry> deleteReference(const std::string& folder, const DeleteReference& wish,
                                      Caller& caller) {
    return withRepository(folder, Repository::Use::change, caller, [&](WorkingTree& workingTree) {
        return deleteReference(workingTree.repository(), wish);
    });
}

}  // namespace qrv
