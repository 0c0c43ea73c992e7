#include <engine/base/Translation.h>
#include <engine/operations/Ignore.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/repository/FindRepository.h>
#include <engine/worktree/IgnoreRules.h>
#include <engine/worktree/PathArgument.h>

namespace qrv {

namespace {

IgnoreRules rulesOf(const common::RootPath& root, Caller& caller) {
    return IgnoreRules(root, [&caller](const OdString& text) { caller.note(text); });
}

}  // namespace

Expected<std::vector<IgnoreRule>> listIgnoreRules(const std::string& folder, Caller& caller) {
    return withoutExceptions([&]() -> Expected<std::vector<IgnoreRule>> {
        const Expected<common::RootPath> root = findRepository(folder, caller);
        if (!root)
            return root.error();
        return rulesOf(*root, caller).list();
    });
}

Expected<IgnoreAnswer> checkIgnored(const std::string& folder, const std::string& path,
                                    Caller& caller) {
    return withoutExceptions([&]() -> Expected<IgnoreAnswer> {
        const Expected<common::RootPath> root = findRepository(folder, caller);
        if (!root)
            return root.error();
        const Expected<OdString> relative = pathInRepository(*root, path);
        if (!relative)
            return relative.error();
        IgnoreRules rules = rulesOf(*root, caller);
        return IgnoreAnswer{.path = *relative, .reason = reasonToIgnore(*relative, rules)};
    });
}

Expected<IgnoreRule> addIgnoreRule(const std::string& folder, const OdString& rule,
                                   Caller& caller) {
    return withRepository(
        folder, Repository::Use::change, caller,
        [&](WorkingTree& workingTree) -> Expected<IgnoreRule> {
            const Expected<int> line = addIgnoreRule(rule, workingTree.root());
            if (!line)
                return line.error();
            if (rule[0] != L'^' && rule.find(L'/') >= 0)
                caller.note(
                    tr(L"Note: rules are compared with the names of files and folders, so that one "
                       L"with a slash matches nothing"));
            return IgnoreRule{.line = *line, .text = rule};
        });
}

}  // namespace qrv
