#include <common/worktree/CollectFiles.h>
#include <common/worktree/NameRulesInternal.h>
#include <common/worktree/RepoIgnore.h>
#include <platform/ut/Dir.h>
#include <platform/ut/FileName.h>

#include <algorithm>
#include <string>
#include <utility>

namespace common {

namespace {

/// `prefix` and `name` in one allocation.
OdString joined(const OdString& prefix, const OdString& name) {
    std::wstring text;
    text.reserve(static_cast<std::size_t>(prefix.getLength()) +
                 static_cast<std::size_t>(name.getLength()));
    text.append(prefix.c_str(), static_cast<std::size_t>(prefix.getLength()));
    text.append(name.c_str(), static_cast<std::size_t>(name.getLength()));
    return OdString(std::move(text));
}

struct WalkOptions {
    bool collectDirectories = false;
    std::uint32_t listFlags = 0;
};

/// Walks folders without recursion, however deep they are, and reads each of them once.
class Walk {
public:
    Walk(const WalkOptions& options, const NameRules& excludes)
        : options_(options), excludes_(excludes) {}

    /// Lists what is below `folder`; reported paths begin with `prefix`.
    void run(const OdString& folder, const OdString& prefix) {
        visit(folder, prefix);
        while (!pending_.empty()) {
            const PendingFolder next = std::move(pending_.back());
            pending_.pop_back();
            if (options_.collectDirectories)
                contents_.directories.push_back(next.reported);
            visit(next.path, next.reported + separator_);
        }
    }

    DirContents takeContents() { return std::move(contents_); }

private:
    struct PendingFolder {
        OdString path;
        OdString reported;
    };

    void visit(const OdString& folder, const OdString& prefix) {
        const ut::Dir dir(folder);
        if (!dir.isOpened())
            return;
        addFiles(dir, prefix);
        addFolders(dir, prefix);
    }

    void addFiles(const ut::Dir& dir, const OdString& prefix) {
        for (const OdString& name : dir.list({}, options_.listFlags | ut::Dir::kFiles)) {
            if (!name.isEmpty() && !excludes_.exclude(name))
                contents_.files.push_back(joined(prefix, name));
        }
    }

    /// The last folder of the listing goes first onto the stack, so that the first is walked next.
    void addFolders(const ut::Dir& dir, const OdString& prefix) {
        std::vector<OdString> names = dir.list({}, options_.listFlags | ut::Dir::kFolders);
        std::reverse(names.begin(), names.end());
        const OdString folder = dir.getName() + separator_;
        for (const OdString& name : names) {
            // A host's listing may hold the folder itself and the one above it.
            if (name.isEmpty() || name == L"." || name == L".." || excludes_.exclude(name))
                continue;
            pending_.push_back({joined(folder, name), joined(prefix, name)});
        }
    }

    const WalkOptions options_;
    const NameRules& excludes_;
    const wchar_t separator_ = ut::FileName::getPathSeparator();
    DirContents contents_;
    std::vector<PendingFolder> pending_;
};

}  // namespace

CollectOptions::CollectOptions(bool isRelative, bool withDirectories, bool extendedListing,
                               const std::vector<std::regex>& excludedNames)
    : relative(isRelative),
      collectDirectories(withDirectories),
      listFlags(extendedListing ? ut::Dir::kExtended : 0U),
      excludes(excludedNames) {
}

DirContents collectDirContents(const OdString& folder, const CollectOptions& options) {
    const NameRules excludes(options.excludes);
    Walk walk({options.collectDirectories, options.listFlags}, excludes);
    walk.run(folder, options.relative ? OdString() : folder + ut::FileName::getPathSeparator());
    return walk.takeContents();
}

Expected<std::vector<File>> collectRepoFiles(std::function<void(const OdString&)> onError,
                                             const RootPath& root) {
    const RepoIgnore ignore(std::move(onError), root);
    const NameRules excludes(ignore, L".qrv");
    Walk walk({}, excludes);
    walk.run(root.path(), {});

    const OdString properties = root.propertiesPath();
    const Expected<OdString> relativeProperties = root.relativePathTo(properties);
    if (!relativeProperties)
        return relativeProperties.error();
    walk.run(properties, *relativeProperties + ut::FileName::getPathSeparator());

    std::vector<OdString> paths = walk.takeContents().files;
    std::vector<File> files(paths.size());
    for (std::size_t i = 0; i < paths.size(); ++i)
        files[i].path = std::move(paths[i]);
    return files;
}

}  // namespace common
