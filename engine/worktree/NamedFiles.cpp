#include <engine/paths/Layout.h>
#include <engine/paths/PathParts.h>
#include <engine/repository/MetadataCheck.h>
#include <engine/worktree/AsideName.h>
#include <engine/worktree/IgnoreRules.h>
#include <engine/worktree/NamedFiles.h>
#include <engine/worktree/StatusByFolder.h>

#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace qrv {

namespace {

/// Tells of paths in order whether a scan lists them.
class ListedPaths {
public:
    explicit ListedPaths(IgnoreRules& rules) : rules_(rules) {}

    bool lists(const OdString& path) {
        if (isOurOwn(path))
            return false;
        // Thousands of new files may lie in one folder.
        const OdString folder = parentOf(path);
        if (!folder_ || *folder_ != folder) {
            folder_ = folder;
            isFolderListed_ = !reasonToIgnore(path, rules_);
            return isFolderListed_;
        }
        const OdString name = nameOf(path);
        const bool isOrdinary = isFolderListed_ && name != OdString(layout::metadataFolder);
        return isOrdinary ? rules_.match(name) == nullptr : !reasonToIgnore(path, rules_);
    }

private:
    IgnoreRules& rules_;
    std::optional<OdString> folder_;
    /// Whether a file of it was found to be listed, and so the folder is.
    bool isFolderListed_ = false;
};

/// Rules that cannot be read are not none.
void noteUnreadRules(const sys::Folder& root, std::vector<Unseen>& unseen) {
    const std::error_code cause = root.openFile(layout::ignoreRulesPath).error();
    if (!meansNoFile(cause))
        unseen.push_back({OdString(layout::ignoreRulesPath),
                          cause ? cause : std::make_error_code(std::errc::io_error)});
}

}  // namespace

Expected<NamedFiles> lookAtNamed(WorkingTree& workingTree, const std::vector<OdString>& paths) {
    NamedFiles named;
    named.baseline = workingTree.baselineOf(paths);
    const auto remember = [&named](const OdString& text) { named.messages.push_back(text); };
    IgnoreRules rules(workingTree.root(), remember);
    if (!rules.isRead())
        noteUnreadRules(workingTree.folder(), named.unseen);
    if (Expected<void> checked = checkMetadata(workingTree.folder(), workingTree.root().path());
        !checked)
        return std::move(checked).error();
    StatusByFolder folders(workingTree.folder());
    ListedPaths listed(rules);
    const std::vector<KnownFile>& known = named.baseline->files();
    std::size_t place = 0;
    for (const OdString& path : paths) {
        const bool isKnown = place < known.size() && compare(known[place].path, path) == 0;
        const std::size_t knownPlace = isKnown ? place++ : known.size();
        if (!isKnown && !listed.lists(path))
            continue;
        const std::optional<sys::FileStatus> status = folders.status(path.toNarrow());
        if (isKnown && status && !isUnmodified(known[knownPlace], *status))
            named.candidates.push_back({knownPlace, *status});
        if (!isKnown && status)
            named.others.push_back({path, *status});
    }
    named.unseen.insert(named.unseen.end(), folders.unseen().begin(), folders.unseen().end());
    return named;
}

}  // namespace qrv
